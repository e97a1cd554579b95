# A photographed page: the shadow goes, the paper becomes white; then black and white for reading.
omb apply photographed.png even.png truecolor gray whiten
omb apply photographed.png readable.tif truecolor gray whiten binary
