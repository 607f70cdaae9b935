; Device profile for the device simulator: a printer that cannot be reached. The I/O library
; gives no device address, so the plug-in falls back to the accessory defaults of the driver.
!no-address
