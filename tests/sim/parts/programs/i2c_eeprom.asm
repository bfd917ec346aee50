; Writes "Zor" to a 24LC256 at address 0x0100 over bit-banged I2C (SCL on
; RC3, SDA on RC4, open drain through TRISC), polls for the end of the write
; cycle, reads the three bytes back into 0x30-0x32, counts the polls in
; 0x33 and sets 0x34 to 0xAA when done. 4 MHz crystal.
        list    p=16f877
        #include <p16f877.inc>
        __CONFIG _XT_OSC & _WDT_OFF & _PWRTE_OFF & _LVP_OFF

        cblock  0x20
        byte, bits, ack, nack
        endc

SDA_LO  macro
        bsf     STATUS, RP0
        bcf     TRISC, 4
        bcf     STATUS, RP0
        endm
SDA_HI  macro
        bsf     STATUS, RP0
        bsf     TRISC, 4
        bcf     STATUS, RP0
        endm
SCL_LO  macro
        bsf     STATUS, RP0
        bcf     TRISC, 3
        bcf     STATUS, RP0
        endm
SCL_HI  macro
        bsf     STATUS, RP0
        bsf     TRISC, 3
        bcf     STATUS, RP0
        endm

        org     0
        clrf    PORTC
        clrf    0x33
        clrf    0x34
        call    start
        movlw   0xA0
        call    write
        movlw   0x01
        call    write
        movlw   0x00
        call    write
        movlw   'Z'
        call    write
        movlw   'o'
        call    write
        movlw   'r'
        call    write
        call    stop
poll    incf    0x33, f
        call    start
        movlw   0xA0
        call    write
        btfss   ack, 0
        goto    ready
        call    stop
        goto    poll
ready   movlw   0x01
        call    write
        movlw   0x00
        call    write
        call    start
        movlw   0xA1
        call    write
        movlw   0
        call    read
        movwf   0x30
        movlw   0
        call    read
        movwf   0x31
        movlw   1
        call    read
        movwf   0x32
        call    stop
        movlw   0xAA
        movwf   0x34
done    goto    done

start   SDA_HI
        SCL_HI
        SDA_LO
        SCL_LO
        return

stop    SDA_LO
        SCL_HI
        SDA_HI
        return

; Sends W; ack bit 0 is set when the part did not acknowledge.
write   movwf   byte
        movlw   8
        movwf   bits
wloop   rlf     byte, f
        btfss   STATUS, C
        goto    wzero
        SDA_HI
        goto    wclock
wzero   SDA_LO
wclock  SCL_HI
        SCL_LO
        decfsz  bits, f
        goto    wloop
        SDA_HI
        SCL_HI
        clrf    ack
        btfsc   PORTC, 4
        incf    ack, f
        SCL_LO
        return

; Reads a byte into W; W = 0 acknowledges it, 1 does not.
read    movwf   nack
        SDA_HI
        movlw   8
        movwf   bits
        clrf    byte
rloop   SCL_HI
        bcf     STATUS, C
        btfsc   PORTC, 4
        bsf     STATUS, C
        rlf     byte, f
        SCL_LO
        decfsz  bits, f
        goto    rloop
        btfsc   nack, 0
        goto    rnack
        SDA_LO
        goto    rclock
rnack   SDA_HI
rclock  SCL_HI
        SCL_LO
        SDA_HI
        movf    byte, w
        return

        end
