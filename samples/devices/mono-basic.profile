; Device profile for the device simulator: a printer that prints black only and has none of the
; accessories. One answer per line, item=answer, the items as the data map asks them;
; "cfg:Protocol" is the protocol the device speaks. An item without a line has no answer.
cfg:Protocol=KELP
CID=MFG:Velmora;CMD:PCL3GUI;MDL:ZX Inkjet 1200 Mono;CLS:PRINTER;CID:TORVELL_ZX1200;
dd:DuplexUnit=Not installed
dd:Duplex=disabled
ink:ColorPrinting=disabled
