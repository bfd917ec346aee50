' Ring buffer and checksum.
' Twelve numbers go into an eight-byte ring buffer, so the oldest four are
' overwritten; the buffer is then drained in order into OUTBUF, and every
' value drained is mixed into a checksum by MIX, a macro written in BASIC.
DEVICE 16F877
DECLARE XTAL 4
MACRO_PARAMS ON

DIM BUF[8]
DIM OUTBUF[8]
DIM HEAD AS BYTE
DIM TAIL AS BYTE
DIM FILLED AS BYTE
DIM VALUE AS BYTE
DIM SUM AS BYTE
DIM N AS BYTE
DIM I AS BYTE

' MIX total, value: total = (total XOR value) rotated left by one bit.
MIX MACRO P1, P2
    BYTE_WREG P2
    XORWF P1, F
    RLF P1, W
    RLF P1, F
ENDM

    GOTO Main

' Stores N at HEAD; a full buffer drops its oldest byte.
Push:
    BUF[HEAD] = N
    HEAD = HEAD + 1
    HEAD = HEAD & 7
    IF FILLED = 8 THEN
        TAIL = TAIL + 1
        TAIL = TAIL & 7
    ELSE
        INC FILLED
    ENDIF
    RETURN

' Takes the oldest byte into VALUE.
Pop:
    VALUE = BUF[TAIL]
    TAIL = TAIL + 1
    TAIL = TAIL & 7
    DEC FILLED
    RETURN

Main:
    HEAD = 0 : TAIL = 0 : FILLED = 0
    FOR N = 1 TO 12
        GOSUB Push
    NEXT
    SUM = 0 : I = 0
    WHILE FILLED > 0
        GOSUB Pop
        OUTBUF[I] = VALUE
        MIX SUM, VALUE
        INC I
    WEND
END
