# A photographed page: the shadow goes, the paper becomes white; then black and white for reading.
omb apply photographed.png even.png whiten
omb apply photographed.png readable.tif whiten binary
