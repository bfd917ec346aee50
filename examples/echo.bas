' Echo: receives a line of up to 16 characters on PORTC.7 and sends it back
' on PORTC.6 (9600 baud, 8 data bits, no parity, true levels). A line ends
' with a carriage return; after 5 seconds without a character the program
' says so and waits again.
DEVICE 16F877
DECLARE XTAL 4
CONFIG XT_OSC, WDT_OFF, LVP_OFF
DECLARE RSOUT_PIN PORTC.6
DECLARE RSOUT_MODE TRUE
DECLARE RSIN_PIN PORTC.7
DECLARE RSIN_MODE TRUE
DECLARE RSIN_TIMEOUT 5000
DECLARE SERIAL_BAUD 9600
DIM LINE_IN[17]
DIM LENGTH AS BYTE
DIM CHAR AS BYTE

    RSOUT "Ready", 13, 10
NEXT_LINE:
    LENGTH = 0
NEXT_CHAR:
    RSIN {QUIET}, CHAR
    IF CHAR = 13 THEN GOTO ECHO_LINE
    LINE_IN[LENGTH] = CHAR
    INC LENGTH
    IF LENGTH < 16 THEN GOTO NEXT_CHAR
ECHO_LINE:
    LINE_IN[LENGTH] = 0
    RSOUT "You typed: ", STR LINE_IN\16, 13, 10
    GOTO NEXT_LINE
QUIET:
    RSOUT "(nothing for 5 s)", 13, 10
    GOTO NEXT_LINE
END
