#!/bin/bash
# Runs omb from end to end: cli_test.sh DIRECTORY OMB...
# OMB may be several words, such as a runner and the program.
set -u
export LC_ALL=C.UTF-8
directory=$1
shift
omb=("$@")
samples=$(cd "$(dirname "$0")/samples" && pwd)
rm -rf "$directory"
mkdir -p "$directory"
cd "$directory" || exit 1

failures=0
fail() {
  echo "FAILED: $*"
  sed 's/^/    /' out.txt err.txt
  failures=$((failures + 1))
}

# expect STATUS PATTERN ARGUMENT...: omb ends with this status and writes a line to stderr that
# matches the pattern; with an empty pattern it writes nothing there.
expect() {
  local status=$1 pattern=$2
  shift 2
  "${omb[@]}" "$@" > out.crlf 2> err.crlf
  local actual=$?
  tr -d '\r' < out.crlf > out.txt
  # Wine tells here what befalls its own services, such as a driver that is stopped too early.
  tr -d '\r' < err.crlf | sed '/^wine: /d' > err.txt
  rm out.crlf err.crlf
  if [ $actual != "$status" ]; then
    fail "omb $*: status $actual instead of $status"
  elif [ -z "$pattern" ] && [ -s err.txt ]; then
    fail "omb $*: complains"
  elif [ -n "$pattern" ] && ! grep -q -e "$pattern" err.txt; then
    fail "omb $*: does not say '$pattern'"
  fi
}
check() { "$@" || fail "$*"; }
in_output() { grep -q -e "$1" out.txt || fail "stdout lacks '$1'"; }

# bitmap BITS PIXELS: a file of 2 x 2 pixels.
bitmap() {
  printf 'BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x'"$1"'\0'
  printf '\0\0\0\0\0\0\0\0\x23\x2e\0\0\x23\x2e\0\0\0\0\0\0\0\0\0\0'"$2"
}
bitmap 18 '\1\2\3\4\5\6\0\0\7\x8\x9\xa\xb\xc\0\0' > 'a b.bmp'
bitmap 10 '\1\2\3\4\5\6\7\x8' > high.bmp
echo 'no image at all' > broken.bmp

# Steps, in order; the file keeps everything else.
expect 0 '' apply 'a b.bmp' same.bmp
expect 0 '' apply 'a b.bmp' negative.bmp invert
check test "$(tail -c 16 same.bmp | od -An -tx1)" = "$(tail -c 16 'a b.bmp' | od -An -tx1)"
check test "$(tail -c 16 negative.bmp | od -An -tx1 | tr -d ' \n')" = \
  fefdfcfbfaf90000f8f7f6f5f4f30000
expect 0 '' apply negative.bmp part.tmp --format bmp crop=1,0,1,1 invert cpydibrect=0,1,1,1
check test "$(tail -c 4 part.tmp | od -An -tx1 | tr -d ' \n')" = 04050600
expect 0 '' apply same.bmp area.bmp scale=50%,area
expect 0 '' apply same.bmp box.bmp resize=50%,box
check cmp -s area.bmp box.bmp

# A failure is one line, and leaves the old file and nothing else.
cp same.bmp kept.bmp
ls > before.txt
expect 1 '^omb: broken.bmp: .' apply broken.bmp kept.bmp invert
expect 1 '^omb: missing.bmp: .' apply missing.bmp kept.bmp invert
expect 1 '^omb: same.bmp: pseudocolor: not possible on a 24-bit image (works on 1, 4 and 8 bits); try gray' \
  apply same.bmp kept.bmp pseudocolor=fire
check test "$(wc -l < err.txt)" = 1
expect 1 "^omb: nowhere/x.bmp: ." apply 'a b.bmp' nowhere/x.bmp invert
check cmp -s same.bmp kept.bmp
ls > after.txt
check diff before.txt <(grep -v -e after.txt after.txt)

# A wrong command line: status 2, and how it should be.
expect 2 "^omb: crop: 'left' must be a whole number from 0 up, not 'x'" apply same.bmp x.bmp crop=x,0,1,1
check grep -q '^usage: crop=left,top,right,bottom' err.txt
expect 2 '^usage: omb apply' apply same.bmp
expect 2 '^omb: --format xyz: .' apply --format xyz same.bmp x.bmp invert
expect 2 '^omb: .*jobs' apply --jobs 0 same.bmp x.bmp
expect 2 'such\|expected' apply --frob same.bmp x.bmp
expect 2 "^omb: there is no command 'frob'" frob
expect 2 '^omb: a command is needed'
expect 2 'usage: omb gallery' gallery same.bmp
check test ! -e x.bmp

# Many files: the good ones are done, the bad one is told, nothing is replaced by surprise.
expect 1 '^omb: broken.bmp: .' apply --jobs 3 --out-dir many --format bmp \
  same.bmp broken.bmp 'a b.bmp' negative.bmp -- invert
check test "$(tail -n 1 err.txt)" = 'omb: 1 of 4 files failed'
check test "$(wc -l < err.txt)" = 2
check cmp -s many/negative.bmp same.bmp
check cmp -s many/same.bmp 'many/a b.bmp'
check test "$(ls many | wc -l)" = 3
mkdir other
cp same.bmp other/SAME.bmp
expect 2 'would both become' apply --out-dir new --format bmp same.bmp other/SAME.bmp -- invert
expect 2 'would be replaced by its own result' apply --out-dir . same.bmp -- invert
expect 2 "'--' is missing" apply --out-dir new same.bmp invert
check test ! -e new
check cmp -s same.bmp kept.bmp

# One odd name is that file's failure.
expect 1 "^omb: odd.xyz: " apply --out-dir many2 same.bmp odd.xyz -- invert
check cmp -s many2/same.bmp negative.bmp

# Standard input and output.
check test "$("${omb[@]}" apply --format bmp - - invert < same.bmp | od -An -tx1 | tr -d '\n')" = \
  "$(od -An -tx1 negative.bmp | tr -d '\n')"
expect 2 'standard output has no name' apply same.bmp -

# Pages: all to TIFF, one where it is asked for, none lost in silence.
cp "$samples/palette2_pages_remark.tif" pages.tif
expect 0 '' apply pages.tif pages.tif invert
expect 0 '' info pages.tif
in_output 'page 3 of 3'
expect 1 '^omb: pages.tif: it has 3 pages, and a PNG file holds one: --page N' apply pages.tif p.png
expect 0 '' apply --page 2 pages.tif p.png
expect 1 '^omb: pages.tif: there is no page 4' apply --page 4 pages.tif p4.png
check test ! -e p4.png

# For programs.
expect 0 '' histogram --csv same.bmp
check test "$(sed -n '1p;3p' out.txt | tr '\n' ' ')" = 'value,red,green,blue 1,0,0,1 '
cp "$samples/rgb16_interlaced.png" wide.png
expect 0 '16 bits per channel are reduced to 8' apply wide.png wide.bmp
expect 0 '' apply --quiet wide.png wide.bmp

# What the compression of the result is.
expect 0 '' apply --compression none same.bmp plain.tif
expect 2 'compression of TIFF is' apply --compression zip same.bmp plain.tif
expect 2 'no choice of compression in BMP' apply --compression lzw same.bmp plain.bmp
expect 0 '' apply --quality 10 same.bmp low.jpg

# A program that ends early leaves no file behind; what did not arrive is reported.
if [ "$OSTYPE" != cygwin ] && [ ${#omb[@]} = 1 ]; then
  "${omb[@]}" apply same.bmp large.bmp scale=1000x1000
  rm after.txt
  ls -A > before.txt
  { (ulimit -f 100; "${omb[@]}" apply large.bmp stopped.bmp invert); } 2> /dev/null
  check test $? -gt 128
  ls -A > after.txt
  check diff before.txt <(grep -v -e after.txt after.txt)
  if [ -e /dev/full ]; then
    "${omb[@]}" info same.bmp > /dev/full 2> err.txt
    check test $? = 1
    check grep -q 'standard output: No space left' err.txt
    "${omb[@]}" apply --format tif large.bmp - > /dev/full 2> err.txt
    check grep -q 'standard output: cannot be written: No space left' err.txt
  fi
  # What is no image is not read to its end.
  expect 1 '^omb: /dev/zero: it is not' info /dev/zero
fi

# Names of other alphabets, and long ones.
name='Größe – 漢字 🎨'
expect 0 '' apply 'a b.bmp' "$name.png"
expect 0 '' apply "$name.png" again.bmp
check cmp -s same.bmp again.bmp
expect 0 '' apply --out-dir "$name" --format tif "$name.png" -- invert
check test -e "$name/$name.tif"
expect 0 '' info "$name/$name.tif"
in_output "$name"
expect 0 '' histogram "$name.png" -o "$name.svg"
check grep -q "$name" "$name.svg"
expect 1 "^omb: $name 2.bmp: the file does not exist" info "$name 2.bmp"
deep=$(printf 'a%.0s' {1..120})
deep="$deep/$deep/$deep"
expect 0 '' apply --out-dir "$deep" --format bmp 'a b.bmp' -- invert
check cmp -s negative.bmp "$deep/a b.bmp"
expect 0 '' apply "$deep/a b.bmp" again.bmp invert
check cmp -s same.bmp again.bmp
expect 0 '' gallery "$name.png" "$deep/$name"
check grep -q "<h2>$name" "$deep/$name/index.html"

# What people read.
expect 0 '' info same.bmp high.bmp
in_output '2 x 2 pixels'
in_output '300 x 300 dpi'
in_output '16 bits per pixel'
in_output 'content     colors'
expect 1 '^omb: broken.bmp: .' info broken.bmp same.bmp
in_output '2 x 2 pixels'
expect 0 '' --version
in_output '^omb [0-9]'
expect 0 '' help apply
in_output '^Usage: omb apply INPUT OUTPUT STEP'
expect 2 "there is no step 'frob'" list frob
for what in man bash zsh fish; do
  expect 0 '' generate $what
  in_output enhancepage
  in_output memory.*limit
  [ $what != bash ] || check bash -n out.txt
done
expect 0 '' list
steps=$(sed -n 's/^  \([A-Za-z0-9_]*\).*/\1/p' out.txt)
check test -n "$steps"
expect 0 '' list --json binary
in_output '"maximum": 255'

# The gallery has an exhibit for every step on every input, and needs nothing else.
expect 0 '' gallery 'a b.bmp' high.bmp page
page=page/index.html
for step in $steps; do
  check test "$(grep -c "out.png.* '*$step\b" $page)" -ge 2
done
check grep -q "omb apply 'a b.bmp' out.png invert" $page
check grep -q 'src="data:image/' $page
check test "$(grep -c -e '\(src\|href\)="[^#d]' -e 'https\?:' $page)" = 0
check test "$(ls page)" = index.html
expect 1 '^omb: broken.bmp: .' gallery broken.bmp page2
check test ! -e page2

[ $failures = 0 ] && echo 'all is well'
exit $((failures > 0))
