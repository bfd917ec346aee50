; known-gpsim-deviation: cycles -- gpsim finishes an EEPROM write within a few cycles; the
;   16F87x data sheet (DS30292, data EEPROM write cycle time TWR) gives 4 ms typical, which we
;   take, so the WR polling loop runs about 4000 cycles here
; known-gpsim-deviation: RAM 0x020 -- gpsim starts its data EEPROM at 00h; an erased (blank)
;   data EEPROM reads FFh (DS30292, programming: a bulk erase sets every byte to FFh)
; known-gpsim-deviation: RAM 0x18D -- EECON2 is not a physical register and reads as 0
;   (DS30292, EECON2 register note); gpsim returns the last value written (AAh)
; Data EEPROM: write 0x5A to address 3 with the unlock sequence, wait for WR
; to clear, then read it back; the first read of an unwritten byte gives 0xFF.
    #include <p16f877.inc>
    __config _WDT_OFF & _XT_OSC & _LVP_OFF
    cblock 0x20
    blank, readback, flags
    endc
    org 0
    bsf STATUS,RP1          ; bank 2: EEADR, EEDATA
    movlw 7
    movwf EEADR
    bsf STATUS,RP0          ; bank 3: EECON1
    bcf EECON1,EEPGD
    bsf EECON1,RD
    bcf STATUS,RP0
    movf EEDATA,w
    bcf STATUS,RP1
    movwf blank
    bsf STATUS,RP1
    movlw 3
    movwf EEADR
    movlw 0x5A
    movwf EEDATA
    bsf STATUS,RP0
    bcf EECON1,EEPGD
    bsf EECON1,WREN
    movlw 0x55
    movwf EECON2
    movlw 0xAA
    movwf EECON2
    bsf EECON1,WR
wait
    btfsc EECON1,WR
    goto wait
    bcf EECON1,WREN
    bsf EECON1,RD
    bcf STATUS,RP0
    movf EEDATA,w
    bcf STATUS,RP1
    movwf readback
    movf PIR2,w
    movwf flags
done goto done
    end
