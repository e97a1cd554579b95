# Small JPEG files of all photographs, 320 pixels wide, on all processors.
omb apply --out-dir small --format jpg photos/*.jpg -- resize=320x
