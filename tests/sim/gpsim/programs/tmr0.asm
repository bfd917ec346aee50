; Timer0: counting at 1:1, the two-cycle inhibit after a write, prescaler
; ratios, overflow setting T0IF.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x20
    s0, s1, s2, s3, s4, s5, s6, s7, s8, s9, flags, n
    endc
    org 0
    bsf STATUS,RP0
    movlw b'11011000'   ; internal clock, prescaler on the WDT (TMR0 1:1)
    movwf OPTION_REG
    bcf STATUS,RP0
    clrf TMR0
    movf TMR0,w
    movwf s0
    movf TMR0,w
    movwf s1
    movf TMR0,w
    movwf s2
    movf TMR0,w
    movwf s3
    nop
    nop
    movf TMR0,w
    movwf s4
    bsf STATUS,RP0
    movlw b'11010001'   ; prescaler 1:4 on TMR0
    movwf OPTION_REG
    bcf STATUS,RP0
    clrf TMR0
    movlw 20
    movwf n
wait1 decfsz n,f
    goto wait1
    movf TMR0,w
    movwf s5
    movlw 0xF0
    movwf TMR0
    bcf INTCON,T0IF
    movlw 30
    movwf n
wait2 decfsz n,f
    goto wait2
    movf TMR0,w
    movwf s6
    movf INTCON,w
    movwf flags
    bsf STATUS,RP0
    movlw b'11010111'   ; 1:256
    movwf OPTION_REG
    bcf STATUS,RP0
    clrf TMR0
    bcf INTCON,T0IF
wait3 btfss INTCON,T0IF
    goto wait3
    movf TMR0,w
    movwf s7
done goto done
    end
