' Hello: sends "Hello from Zorvel" at 9600 baud (8N1, true levels) on PORTB.0
' of a 16F877 running at 4 MHz. The serial routine is written in inline
' assembly; one bit takes 104 instruction cycles (104 µs at 4 MHz).
DEVICE 16F877
DECLARE XTAL 4
CONFIG XT_OSC, WDT_OFF, LVP_OFF
DIM CHAR, BITS, DELAY, INDEX

ASM
        bsf     STATUS, RP0
        bcf     TRISB, 0        ; PORTB.0 drives the line
        bcf     STATUS, RP0
        bsf     PORTB, 0        ; idle high
        clrf    INDEX
next_char
        movf    INDEX, w
        call    message
        iorlw   0
        btfsc   STATUS, Z
        goto    done            ; a 0 ends the text
        movwf   CHAR
        call    send
        incf    INDEX, f
        goto    next_char
done
        goto    done
message
        addwf   PCL, f
        dt      "Hello from Zorvel", 13, 10, 0
send                            ; the byte in CHAR, least significant bit first
        bcf     PORTB, 0        ; start bit
        call    bit_delay
        movlw   8
        movwf   BITS
send_bit
        rrf     CHAR, f
        btfsc   STATUS, C
        goto    one
        bcf     PORTB, 0
        goto    sent
one
        bsf     PORTB, 0
        nop
sent
        call    bit_delay       ; with the loop around it: 104 cycles a bit
        decfsz  BITS, f
        goto    send_bit
        bsf     PORTB, 0        ; stop bit
        call    bit_delay
        return
bit_delay                       ; 3 * 30 + 1 cycles, plus call and return
        movlw   30
        movwf   DELAY
delay_loop
        decfsz  DELAY, f
        goto    delay_loop
        return
ENDASM
END
