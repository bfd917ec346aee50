; Drives an HD44780 LCD in 4-bit mode: D4-D7 on RB0-RB3, RS on RB4, E on RB5.
; 4 MHz crystal. Line 1 "Zorvel LCD", line 2 "4-bit ok".
        list    p=16f877
        #include <p16f877.inc>
        __CONFIG _XT_OSC & _WDT_OFF & _PWRTE_OFF & _LVP_OFF

        cblock  0x20
        tmp, d1, d2, index
        endc

        org     0
        bsf     STATUS, RP0
        clrf    TRISB
        bcf     STATUS, RP0
        clrf    PORTB
        movlw   d'20'               ; power-up wait
        call    delayms
        movlw   0x03
        call    nibble
        movlw   d'5'
        call    delayms
        movlw   0x03
        call    nibble
        call    delay100
        movlw   0x03
        call    nibble
        call    delay100
        movlw   0x02                ; 4-bit interface
        call    nibble
        call    delay100
        movlw   0x28                ; two lines, 5x8
        call    command
        movlw   0x0C                ; display on, no cursor
        call    command
        movlw   0x01                ; clear
        call    command
        movlw   d'2'
        call    delayms
        movlw   0x06                ; increment, no shift
        call    command
        clrf    index
line1   movf    index, w
        call    text1
        iorlw   0
        btfsc   STATUS, Z
        goto    second
        call    lcddata
        incf    index, f
        goto    line1
second  movlw   0xC0
        call    command
        clrf    index
line2   movf    index, w
        call    text2
        iorlw   0
        btfsc   STATUS, Z
        goto    done
        call    lcddata
        incf    index, f
        goto    line2
done    goto    done

; W low nibble (with RS in bit 4) onto the bus, then a pulse on E.
nibble  movwf   PORTB
        bsf     PORTB, 5
        nop
        bcf     PORTB, 5
        return

command movwf   tmp
        swapf   tmp, w
        andlw   0x0F
        call    nibble
        movf    tmp, w
        andlw   0x0F
        call    nibble
        goto    delay100

lcddata movwf   tmp
        swapf   tmp, w
        andlw   0x0F
        iorlw   0x10
        call    nibble
        movf    tmp, w
        andlw   0x0F
        iorlw   0x10
        call    nibble
        goto    delay100

; About 100 us.
delay100 movlw  d'32'
        movwf   d1
d100    decfsz  d1, f
        goto    d100
        return

; W milliseconds (about 1000 cycles each).
delayms movwf   d2
dms     movlw   d'249'
        movwf   d1
dms1    nop
        decfsz  d1, f
        goto    dms1
        decfsz  d2, f
        goto    dms
        return

text1   addwf   PCL, f
        dt      "Zorvel LCD", 0
text2   addwf   PCL, f
        dt      "4-bit ok", 0

        end
