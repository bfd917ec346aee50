; known-gpsim-deviation: RAM 0x085 -- gpsim keeps bits 7:6 written to TRISA; on the PIC16F877
; they are unimplemented and read 0 (DS30292C, Table 3-1 PORTA functions / TRISA "--11 1111").
; known-gpsim-deviation: RAM 0x024 -- the TRISA value read by the program, same reason
; known-gpsim-deviation: RAM 0x00B -- gpsim sets RBIF when RB4-RB7 change as outputs; only
; inputs cause the change interrupt (DS30292C, 3.2 PORTB). INTF is set in both (RB0 rose).
; known-gpsim-deviation: RAM 0x026 -- the INTCON value read by the program, same reason
; known-gpsim-deviation: RAM 0x08B -- INTCON seen from bank 1
; known-gpsim-deviation: RAM 0x10B -- INTCON seen from bank 2
; known-gpsim-deviation: RAM 0x18B -- INTCON seen from bank 3
; PORTB and PORTD outputs read back through the pins, PORTA/PORTE digital
; after ADCON1, TRIS bits of missing pins reading 0, the RB0 edge from an
; output setting INTF.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x20
    pb, pd, pa, pe, ta, te, ic
    endc
    org 0
    bsf STATUS,RP0
    movlw 0x06
    movwf ADCON1
    clrf TRISB
    clrf TRISD
    movlw 0xFF
    movwf TRISA
    bcf STATUS,RP0
    movlw 0xA5
    movwf PORTB
    movwf PORTD
    movf PORTB,w
    movwf pb
    movf PORTD,w
    movwf pd
    movf PORTA,w
    movwf pa
    movf PORTE,w
    movwf pe
    bsf STATUS,RP0
    movf TRISA,w
    bcf STATUS,RP0
    movwf ta
    movf INTCON,w
    movwf ic
    bsf STATUS,RP0
    movf TRISE,w
    bcf STATUS,RP0
    movwf te
done goto done
    end
