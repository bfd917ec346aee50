' LCD counter: a 2-line HD44780 display on PORTB (data lines on PORTB.4 to
' PORTB.7, RS on PORTB.3, EN on PORTB.2, 4-bit interface) shows a title and a
' count that goes up ten times a second, in decimal and hexadecimal.
DEVICE 16F877
DECLARE XTAL 4
CONFIG XT_OSC, WDT_OFF, LVP_OFF
DECLARE LCD_DTPIN PORTB.4
DECLARE LCD_RSPIN PORTB.3
DECLARE LCD_ENPIN PORTB.2
DECLARE LCD_INTERFACE 4
DECLARE LCD_LINES 2
DIM COUNT_UP AS WORD

    CLS
    PRINT "Zorvel counter"
    COUNT_UP = 0
    WHILE 1 = 1
        PRINT AT 2, 1, DEC5 COUNT_UP, " $", HEX4 COUNT_UP
        DELAYMS 100
        INC COUNT_UP
    WEND
END
