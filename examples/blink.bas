' Blink: toggles an LED on PORTB.0 of a 16F84A about twice a second.
' The delay loop is written in inline assembly; the BASIC statements for pins
' and delays compile the same job in fewer lines.
DEVICE 16F84A
DECLARE XTAL 4
CONFIG XT_OSC, WDT_OFF, PWRTE_ON, CP_OFF
REMARKS ON

ASM
        bsf     STATUS, RP0     ; bank 1: make PORTB.0 an output
        bcf     TRISB, 0
        bcf     STATUS, RP0
ENDASM

MAIN_LOOP:
ASM
        movlw   1               ; toggle the LED
        xorwf   PORTB, f
        movlw   250             ; about 250 ms at 4 MHz
        movwf   PP0
OUTER   movlw   249
        movwf   PP1
INNER   nop
        decfsz  PP1, f
        goto    INNER
        decfsz  PP0, f
        goto    OUTER
        goto    MAIN_LOOP
ENDASM
END
