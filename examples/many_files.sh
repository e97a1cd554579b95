# Every scan of a folder, on all processors of this machine, in no more than 2 GB of memory.
omb apply --out-dir clean --format tif --memory-limit 2G scans/*.png -- gray binary
