; known-gpsim-deviation: RAM 0x00B -- gpsim sets RBIF when TRISB turns RB4-RB7 into outputs that
; change level; the PIC16F877 data sheet (DS30292C, 3.2 PORTB) says "Only pins configured as
; inputs can cause this interrupt to occur". Our INTCON here is INTF only (RB0 went high).
; known-gpsim-deviation: RAM 0x08B -- the same INTCON seen from bank 1
; known-gpsim-deviation: RAM 0x10B -- the same INTCON seen from bank 2
; known-gpsim-deviation: RAM 0x18B -- the same INTCON seen from bank 3
; Banked RAM, common RAM at 0x70-0x7F seen from every bank, SFR mirrors.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    org 0
    movlw 0x11
    movwf 0x20
    movwf 0x70
    bsf STATUS,RP0      ; bank 1
    movlw 0x22
    movwf 0xA0 & 0x7F
    movlw 0x23
    movwf 0xF0 & 0x7F   ; common RAM: same byte as 0x70
    movf 0x20 & 0x7F,w  ; reads 0xA0
    movwf 0xA1 & 0x7F
    movlw 0x0F
    movwf FSR           ; FSR mirror
    bsf STATUS,RP1      ; bank 3
    movlw 0x44
    movwf 0x1A0 & 0x7F
    incf 0x1F0 & 0x7F,f ; common RAM again
    movlw 0x05
    movwf PCLATH        ; mirror
    bcf STATUS,RP0      ; bank 2
    movlw 0x33
    movwf 0x120 & 0x7F
    movf 0x170 & 0x7F,w
    movwf 0x121 & 0x7F
    movf FSR,w
    movwf 0x122 & 0x7F
    movlw 0x55
    movwf 0x106 & 0x7F  ; PORTB mirror in bank 2 writes the latch
    clrf PCLATH
    clrf STATUS
    bsf STATUS,RP0
    movlw 0x00
    movwf TRISB         ; PORTB outputs
    bcf STATUS,RP0
    movf PORTB,w
    movwf 0x21
    movf 0x7F,w
    movwf 0x22
done goto done
    end
