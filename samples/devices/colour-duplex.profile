; Device profile for the device simulator: a colour printer with its automatic two-sided unit,
; second tray and photo tray. One answer per line, item=answer, the items as the data map asks
; them; "cfg:Protocol" is the protocol the device speaks. An item without a line has no answer.
cfg:Protocol=KELP
CID=MFG:Velmora;CMD:PCL3GUI,PCLmS;MDL:ZX Inkjet 2610;CLS:PRINTER;CID:QAMA_ZX2610;
dd:DuplexUnit=Installed
dd:Duplex=enabled
tray:TrayState2=Installed
tray:PhotoTray=Installed
ink:ColorPrinting=enabled
