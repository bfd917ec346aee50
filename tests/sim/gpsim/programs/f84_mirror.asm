; processor: p16f84
; The 16F84 (gpsim 0.31 has no 16F84A): bank 1's RAM area is bank 0's RAM; FSR reaches both; PORTA has
; five pins and TRISA five bits; RP1 has no effect on a two-bank device.
    #include <p16f84.inc>
    __config _WDT_OFF & _XT_OSC
    org 0
    movlw 0x12
    movwf 0x0C
    bsf STATUS,RP0
    incf 0x0C,f         ; 0x8C is 0x0C
    movlw 0x1F
    movwf TRISA
    bcf STATUS,RP0
    movlw 0x8D
    movwf FSR
    movlw 0x34
    movwf INDF          ; 0x8D is 0x0D
    movlw 0x4F
    movwf FSR
    incf INDF,f
    movf 0x0C,w
    addwf 0x0D,w
    movwf 0x0E
    bsf STATUS,RP0
    movlw 0xFF
    movwf TRISB
    bcf STATUS,RP0
    movlw 0x00
done goto done
    end
