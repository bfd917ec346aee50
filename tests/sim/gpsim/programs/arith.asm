; Addition and subtraction edge cases: results and STATUS saved to RAM.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x20
    r0, r1, r2, r3, r4, r5, r6, r7, r8, r9, r10, r11, r12, r13, r14, r15
    s0, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10, s11, s12, s13, s14, s15
    endc
    org 0
    movlw 0x0F
    addlw 0x01          ; DC
    movwf r0
    movf STATUS,w
    movwf s0
    movlw 0x80
    addlw 0x80          ; Z C
    movwf r1
    movf STATUS,w
    movwf s1
    movlw 0xFF
    movwf r2
    movlw 0x01
    addwf r2,f          ; Z DC C
    movf STATUS,w
    movwf s2
    movlw 0x03
    sublw 0x05          ; C DC
    movwf r3
    movf STATUS,w
    movwf s3
    movlw 0x05
    sublw 0x03          ; borrow
    movwf r4
    movf STATUS,w
    movwf s4
    movlw 0x01
    sublw 0x10          ; digit borrow
    movwf r5
    movf STATUS,w
    movwf s5
    movlw 0x22
    movwf r6
    subwf r6,f          ; equal
    movf STATUS,w
    movwf s6
    movlw 0x7F
    movwf r7
    movlw 0x80
    subwf r7,w          ; 0x7F - 0x80
    movwf r8
    movf STATUS,w
    movwf s7
    movlw 0x00
    sublw 0x00          ; 0 - 0
    movwf r9
    movf STATUS,w
    movwf s8
    movlw 0x99
    movwf r10
    movlw 0x67
    addwf r10,w         ; 0x100 exactly
    movwf r11
    movf STATUS,w
    movwf s9
    clrf r12
    decf r12,f
    movf STATUS,w
    movwf s10
    incf r12,w
    movwf r13
    movf STATUS,w
    movwf s11
    movlw 0x08
    addlw 0x08          ; DC only
    movwf r14
    movf STATUS,w
    movwf s12
    clrf STATUS
    movf STATUS,w
    movwf s13
    movlw 0xFF
    movwf STATUS        ; TO/PD are read-only
    movf STATUS,w
    movwf s14
    clrf STATUS
done goto done
    end
