; Logic, rotates, swaps, increments and skips.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x30
    a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15
    t0, t1, t2, t3, t4, t5, t6, t7
    endc
    org 0
    movlw 0xA5
    movwf a0
    swapf a0,f
    movlw 0x0F
    andwf a0,w
    movwf a1
    movlw 0xF0
    iorwf a0,w
    movwf a2
    xorlw 0xFF
    movwf a3
    movf STATUS,w
    movwf t0
    comf a3,f
    bsf STATUS,C
    rrf a0,w
    movwf a4
    rrf a4,f
    rlf a4,f
    rlf a4,w
    movwf a5
    movf STATUS,w
    movwf t1
    bcf STATUS,C
    rlf a0,f
    movf STATUS,w
    movwf t2
    movlw 3
    movwf a6
loop decfsz a6,f
    goto loop
    movlw 0xFE
    movwf a7
    incfsz a7,f
    goto $+2
    goto bad
    incfsz a7,f
    goto bad
    btfsc a0,0
    incf a8,f
    btfss a0,1
    incf a9,f
    bsf a10,7
    bcf a10,7
    bsf a10,0
    movlw 0x3C
    andlw 0xC3
    movwf a11
    movf STATUS,w
    movwf t3
    movlw 0x5A
    iorlw 0x00
    xorlw 0x5A
    movwf a12
    movf STATUS,w
    movwf t4
    clrw
    movwf a13
    movf a0,f
    movf STATUS,w
    movwf t5
    nop
    goto done
bad clrf a15
    decf a15,f
done goto done
    end
