' Tones: a short tune, a chirp and a telephone number on one speaker pin of a
' 16F877 at 20 MHz.
' Wiring: PORTB.0 - 1 kilohm - a 100 nF capacitor to ground; from that point a
' 10 uF capacitor to an amplifier or a small earphone. The filter smooths the
' fast switching of FREQOUT and DTMFOUT into sine waves.
DEVICE 16F877
DECLARE XTAL 20
CONFIG HS_OSC, WDT_OFF, PWRTE_ON, LVP_OFF

DIM STEP_NO
DIM TONE AS WORD

    ' A rising C major arpeggio, 200 ms a note (FREQOUT: sine tones in Hz).
    FREQOUT PORTB.0, 200, 523
    FREQOUT PORTB.0, 200, 659
    FREQOUT PORTB.0, 200, 784
    FREQOUT PORTB.0, 400, 1047
    ' The last chord: C and G together.
    FREQOUT PORTB.0, 600, 523, 784
    DELAYMS 300

    ' A chirp with SOUND: square waves of 10000 / (128 - note) Hz, 12 ms a
    ' unit, each note 36 ms; 118 is 1 kHz. Then a burst of white noise.
    FOR STEP_NO = 100 TO 124 STEP 2
        SOUND PORTB.0, [STEP_NO, 3]
    NEXT
    SOUND PORTB.0, [0, 10, 118, 25, 0, 10, 200, 5]
    DELAYMS 300

    ' A falling sweep, 30 ms a step.
    FOR TONE = 1500 TO 300 STEP -100
        FREQOUT PORTB.0, 30, TONE
    NEXT
    DELAYMS 300

    ' Dial 555-0123: 100 ms of tone and 60 ms of silence per digit.
    DTMFOUT PORTB.0, 100, 60, [5, 5, 5, 0, 1, 2, 3]
END
