; Watchdog on: SLEEP, wake-up on the time-out (TO clear), STATUS saved
; around it; CLRWDT sets TO and PD again.
    #include <p16f877.inc>
    __config _WDT_ON & _XT_OSC & _LVP_OFF
    cblock 0x20
    before, after, cleared, count
    endc
    org 0
    movf STATUS,w
    movwf before
    bsf STATUS,RP0
    movlw b'11111000'   ; prescaler on the WDT, 1:1
    movwf OPTION_REG
    bcf STATUS,RP0
    clrwdt
    sleep
    nop
    movf STATUS,w
    movwf after
    clrwdt
    movf STATUS,w
    movwf cleared
    incf count,f
done goto done
    end
