; The remaining instruction forms: results to W and to F, skips taken and
; not taken, CALL/RETURN/RETLW, NOP, and flag behaviour of each.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x40
    m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13
    f0, f1, f2, f3, f4, f5, f6, f7
    endc
    org 0
    movlw 0x3C
    movwf m0
    comf m0,w
    movwf m1
    decf m0,w
    movwf m2
    swapf m0,w
    movwf m3
    iorwf m0,w
    movwf m4
    andwf m0,w
    movwf m5
    xorwf m0,f
    movf STATUS,w
    movwf f0
    clrw
    movf STATUS,w
    movwf f1
    call sub
    movwf m6
    call table
    movwf m7
    movlw 0x01
    movwf m8
    decfsz m8,w         ; W = 0: skip
    goto bad
    movwf m9
    incfsz m8,w         ; W = 2: no skip
    goto ok1
    goto bad
ok1 movwf m10
    btfss m8,0
    goto bad
    btfsc m8,1
    goto bad
    bsf STATUS,C
    movlw 0xFF
    addwf m8,w          ; 1 + 0xFF: Z DC C
    movf STATUS,w
    movwf f2
    movlw 0x80
    movwf m11
    rlf m11,w
    movf STATUS,w
    movwf f3
    rrf m11,f
    rrf m11,f
    movlw 0x10
    subwf m11,w         ; 0x20 - 0x10
    movwf m12
    movf STATUS,w
    movwf f4
    nop
    movlw 0x7F
    addlw 0x01          ; overflow of a signed byte: only DC
    movwf m13
    movf STATUS,w
    movwf f5
    goto done
sub movlw 0x21
    return
table retlw 0x42
bad clrf m0
done goto done
    end
