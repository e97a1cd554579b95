# A scanned page becomes a page of black and white without specks.
omb apply scan.png clean.tif truecolor gray enhancepage=median,3x3 binary
