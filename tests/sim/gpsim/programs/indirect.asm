; INDF/FSR with IRP: fill all four banks through FSR, read back, INDF via INDF.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x70
    count, sum, tmp
    endc
    org 0
    bcf STATUS,IRP
    movlw 0x20
    movwf FSR
fill0 movf FSR,w
    movwf INDF
    incf FSR,f
    movlw 0x70
    subwf FSR,w
    btfss STATUS,Z
    goto fill0
    movlw 0xA0
    movwf FSR
fill1 movf FSR,w
    xorlw 0xFF
    movwf INDF
    incf FSR,f
    movlw 0xF0
    subwf FSR,w
    btfss STATUS,Z
    goto fill1
    bsf STATUS,IRP
    movlw 0x10
    movwf FSR
fill2 movf FSR,w
    addlw 0x40
    movwf INDF
    incf FSR,f
    movlw 0x70
    subwf FSR,w
    btfss STATUS,Z
    goto fill2
    movlw 0x90
    movwf FSR
fill3 swapf FSR,w
    movwf INDF
    incf FSR,f
    movlw 0xF0
    subwf FSR,w
    btfss STATUS,Z
    goto fill3
    ; sum bank 2 through FSR
    clrf sum
    movlw 0x10
    movwf FSR
sum2 movf INDF,w
    addwf sum,f
    incf FSR,f
    btfss FSR,7
    goto sum2
    ; INDF through INDF reads 0, writes nothing
    clrf FSR
    movlw 0x77
    movwf INDF
    movf INDF,w
    movwf tmp
    bcf STATUS,IRP
    movlw 0x83          ; STATUS through FSR
    movwf FSR
    movf INDF,w
    movwf count
    movlw 0xF5          ; common RAM through FSR
    movwf FSR
    movlw 0x99
    movwf INDF
done goto done
    end
