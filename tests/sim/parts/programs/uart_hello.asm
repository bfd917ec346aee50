; Bit-bangs "Hello" at 9600 baud (8N1, idle high) on RB0 with a 4 MHz crystal:
; about 104 instruction cycles a bit.
        list    p=16f877
        #include <p16f877.inc>
        __CONFIG _XT_OSC & _WDT_OFF & _PWRTE_OFF & _LVP_OFF

        cblock  0x20
        char, count, delay
        endc

        org     0
        bsf     STATUS, RP0
        bcf     TRISB, 0
        bcf     STATUS, RP0
        bsf     PORTB, 0
        call    bitdelay
        call    bitdelay
        movlw   'H'
        call    send
        movlw   'e'
        call    send
        movlw   'l'
        call    send
        movlw   'l'
        call    send
        movlw   'o'
        call    send
done    goto    done

send    movwf   char
        movlw   8
        movwf   count
        bcf     PORTB, 0            ; start bit
        call    bitdelay
        nop
        nop
        nop
        nop
bitloop rrf     char, f             ; C = next bit, LSB first
        btfsc   STATUS, C
        bsf     PORTB, 0
        btfss   STATUS, C
        bcf     PORTB, 0
        call    bitdelay
        decfsz  count, f
        goto    bitloop
        nop
        nop
        bsf     PORTB, 0            ; stop bit
        call    bitdelay
        call    bitdelay
        return

; 2 (call) + 2 + 3 * 31 - 1 + 2 (return) = 98 cycles
bitdelay movlw  d'31'
        movwf   delay
bdloop  decfsz  delay, f
        goto    bdloop
        return

        end
