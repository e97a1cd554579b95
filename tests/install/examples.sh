#!/usr/bin/env bash
# Runs the files of examples/ for the shell and Python: examples.sh SOURCE BUILD. Those in Python make
# the same pixels as those for the shell. What was not built is left out, with a word.
set -euo pipefail
source=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
samples=$source/tests/host/samples
work=$build/examples
rm -rf "$work"
mkdir -p "$work/bin"
ln -s /usr/bin/python3 "$work/bin"  # the system's, which has the system's packages
PATH=$build:$work/bin:$PATH

inputs() {  # a folder with what the examples read
  mkdir -p "$1/photos" "$1/scans"
  cp "$samples/rgb_progressive.jpg" "$1/photo.jpg"
  cp "$samples/rgb_progressive.jpg" "$samples/rgb_untransformed.jpg" "$1/photos"
  cp "$samples/gray4.png" "$1/scan.png"
  omb apply -q "$samples/gray4.png" "$1/photographed.png" resize=64x64
  cp "$samples/gray4.png" "$samples/gray16.png" "$1/scans"
}

expect() {  # file, its size and depth
  local facts
  facts=$(omb info --json "$1" | python3 -c '
import json, sys
page = json.load(sys.stdin)[0]["pages"][0]
print(page["width"], "x", page["height"], "x", page["bits"], sep="")')
  [ "$facts" = "$2" ] || { echo "$1 is $facts, not $2"; exit 1; }
}

inputs "$work/shell"
cd "$work/shell"
for example in clean_scan even_light thumbnails palette many_files first_steps; do
  sh -eu "$source/examples/$example.sh" >"$example.txt" 2>&1 || { cat "$example.txt"; exit 1; }
done
expect clean.tif 13x10x1
expect readable.tif 64x64x1
expect small/rgb_untransformed.jpg 320x320x24
expect learned.png 19x19x8
expect dithered.png 19x19x4
expect clean/gray16.tif 13x10x1
expect small.png 10x10x24

if [ -d "$build/python/installed" ] && python3 -c 'import distributed, PIL'; then
  inputs "$work/python"
  cd "$work/python"
  export PYTHONPATH=$build/python/installed PYTHONDONTWRITEBYTECODE=1
  for example in clean_scan even_light thumbnails palette; do
    python3 -W error::DeprecationWarning "$source/examples/$example.py"
  done
  expect small/rgb_untransformed.jpg 320x320x24
  for image in clean.tif even.png readable.tif learned.png dithered.png; do
    omb apply -q "$image" python.bmp truecolor
    omb apply -q "../shell/$image" shell.bmp truecolor
    cmp <(tail -c +55 python.bmp) <(tail -c +55 shell.bmp)
  done
  sh -eu "$source/examples/many_machines.sh" >fleet.txt 2>&1 || { cat fleet.txt; exit 1; }
  expect clean/gray16.tif 13x10x1
else
  echo "without Python, whose packages are not here"
fi
