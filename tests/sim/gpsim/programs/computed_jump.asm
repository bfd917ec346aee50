; Computed jumps: tables read with ADDWF PCL across page boundaries, GOTO
; and CALL into other pages through PCLATH.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x20
    v0, v1, v2, v3, v4, v5, idx
    endc
    org 0
    movlw HIGH table
    movwf PCLATH
    movlw 2
    call table
    movwf v0
    movlw HIGH table
    movwf PCLATH
    movlw HIGH (table+6) ; entry 5 lies past the 256-word boundary
    movwf PCLATH
    movlw 5
    call table
    movwf v1
    movlw HIGH far
    movwf PCLATH
    call far
    movwf v2
    movlw HIGH far2
    movwf PCLATH
    goto far2
back clrf PCLATH
    movwf v3
    movlw HIGH jump
    movwf PCLATH
    movlw 1
    goto jump
landed clrf PCLATH
    movwf v4
    movf PCL,w          ; PCL reads the next address
    movwf v5
done goto done

    org 0x1FC
table addwf PCL,f
    retlw 0x10
    retlw 0x11
    retlw 0x12
    retlw 0x13
    retlw 0x14
    retlw 0x15

    org 0x0900
far retlw 0xAB

    org 0x1800
far2 movlw 0xCD
    clrf PCLATH
    goto back

    org 0x10F0
jump movwf v5
    movf v5,w
    addwf PCL,f
    goto one
    goto two
one movlw 1
    goto $
two movlw HIGH landed
    movwf PCLATH
    movlw 0x22
    goto landed
    end
