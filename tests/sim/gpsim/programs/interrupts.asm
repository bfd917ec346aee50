; known-gpsim-deviation: cycles -- gpsim spends one cycle less per interrupt; the INT pin
; interrupt timing figure of the mid-range data sheets (PIC16F877 DS30292C Figure 12-11,
; PIC16F887 DS40001291H Figure 14-8) shows two dummy cycles between the last instruction and
; the one at 0004h, which is what we count. Five interrupts here: five cycles.
; known-gpsim-deviation: RAM 0x001 -- TMR0 read at the end differs by the same cycles
; known-gpsim-deviation: RAM 0x101 -- TMR0 seen from bank 2
; Timer0 interrupts with context saving, INTF set by software with INTE,
; RETFIE, and a peripheral flag gated by PEIE.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x70
    wsave, ssave, ticks, ints, pirs, order
    endc
    org 0
    goto start
    org 4
isr movwf wsave
    swapf STATUS,w
    movwf ssave
    btfss INTCON,T0IF
    goto notmr
    bcf INTCON,T0IF
    incf ticks,f
notmr btfss INTCON,INTF
    goto noint
    bcf INTCON,INTF
    incf ints,f
    bsf order,0
noint bcf STATUS,RP0
    btfss PIR1,TMR1IF
    goto out
    bcf PIR1,TMR1IF
    incf pirs,f
out swapf ssave,w
    movwf STATUS
    swapf wsave,f
    swapf wsave,w
    retfie
start bsf STATUS,RP0
    movlw b'11000001'   ; TMR0 1:4
    movwf OPTION_REG
    bcf STATUS,RP0
    clrf TMR0
    clrf ticks
    clrf ints
    clrf pirs
    clrf order
    movlw (1<<GIE)|(1<<T0IE)
    movwf INTCON
wait movlw 3
    subwf ticks,w
    btfss STATUS,C
    goto wait
    bcf INTCON,T0IE
    bsf INTCON,INTE
    bsf INTCON,INTF     ; a software-set flag interrupts too
    nop
    bsf order,1
    ; PIR1 flag without PEIE: no interrupt; then with PEIE
    bsf STATUS,RP0
    bsf PIE1,TMR1IE
    bcf STATUS,RP0
    bsf PIR1,TMR1IF
    nop
    movf pirs,w
    movwf 0x20
    bsf INTCON,PEIE
    nop
    movf pirs,w
    movwf 0x21
    bcf INTCON,GIE
    movlw 0x5C
done goto done
    end
