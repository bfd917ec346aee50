' Hello: sends "Hello from Zorvel" and a count at 9600 baud (8 data bits, no
' parity, true levels: idle high) on PORTB.0 of a 16F877 running at 4 MHz.
DEVICE 16F877
DECLARE XTAL 4
CONFIG XT_OSC, WDT_OFF, LVP_OFF
DECLARE RSOUT_PIN PORTB.0
DECLARE RSOUT_MODE TRUE
DECLARE SERIAL_BAUD 9600
DIM LINE_NO AS BYTE

    RSOUT "Hello from Zorvel", 13, 10
    FOR LINE_NO = 1 TO 3
        RSOUT "count ", DEC LINE_NO, 13, 10
    NEXT
END
