# The same by a cluster; without --scheduler it is this machine. A second run does what is left.
python3 -m ombrilo.fleet --format tif 'scans/*.png' clean/ gray binary
