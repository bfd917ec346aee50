' Blink: flashes an LED on PORTB.0 of a 16F84A. The pin changes every 250 ms,
' so the LED is on for 250 ms and off for 250 ms: a period of 500 ms, two
' flashes a second. Wire the LED with a 330 ohm resistor from PORTB.0 to ground.
DEVICE 16F84A
DECLARE XTAL 4
CONFIG XT_OSC, WDT_OFF, PWRTE_ON, CP_OFF

    LOW PORTB.0             ' an output, LED off
MAIN_LOOP:
    TOGGLE PORTB.0          ' on, then off, then on ...
    DELAYMS 250
    GOTO MAIN_LOOP
END
