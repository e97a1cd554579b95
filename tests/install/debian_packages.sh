#!/usr/bin/env bash
# Makes the Debian packages of a build, unpacks them into an empty folder and builds examples with
# what is there: debian_packages.sh SOURCE BUILD COMPILER. Exit status 77: skipped.
set -euo pipefail
source=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
compiler=$3
command -v dpkg-shlibdeps >/dev/null || { echo "skipped, because dpkg-dev is not here"; exit 77; }
work=$build/debian_test
rm -rf "$work"
mkdir "$work"
cd "$build"
for place in one two; do
  SOURCE_DATE_EPOCH=1700000000 cpack -G DEB -B "$work/$place" >"$work/$place.txt" ||
    { cat "$work/$place.txt"; exit 1; }
done
cd "$work/one"
sha256sum -- *.deb >../sums
(cd ../two && sha256sum --quiet -c ../sums) || { echo "two packages of one build differ"; exit 1; }
# The list of contents names every package once, by a digest that is its own, and refers to nothing else.
SOURCE_DATE_EPOCH=1700000000 /usr/bin/python3 "$source/scripts/sbom.py" 1.2.3 . >../sbom.spdx.json
/usr/bin/python3 - ../sbom.spdx.json ../sums <<'PYTHON'
import json, re, sys
document = json.load(open(sys.argv[1]))
ids = [p["SPDXID"] for p in document["packages"]] + [document["SPDXID"]]
assert len(set(ids)) == len(ids) and all(re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", i) for i in ids), ids
digests = {p["name"]: p["checksums"][0]["checksumValue"] for p in document["packages"] if "checksums" in p}
assert digests == {name: digest for digest, name in map(str.split, open(sys.argv[2]))}, digests
links = document["relationships"]
assert all({r["spdxElementId"], r["relatedSpdxElement"]} <= set(ids) for r in links), links
assert {r["relationshipType"] for r in links} == {"DESCRIBES", "STATIC_LINK", "DYNAMIC_LINK"}
PYTHON
if command -v lintian >/dev/null; then
  lintian --fail-on error --tag-display-limit 0 -- *.deb
fi

for package in *.deb; do dpkg -x "$package" ../tree; done
cd "$work"
tree=$work/tree/usr
[ "$(ls tree/usr/share/doc | wc -l)" = 3 ] && [ -f tree/usr/share/doc/libombrilo-dev/copyright ]
zcat "$tree/share/man/man1/omb.1.gz" | grep -q enhancepage
libraries=$(dirname "$(find "$tree/lib" -name libombrilo.so)")
export LD_LIBRARY_PATH=$libraries

expect() {
  local output
  output=$("$1")
  [[ "$output" = *"pixels, the first one 255 255 255" ]] || { echo "$1 printed: $output"; exit 1; }
}
cmake -S "$tree/share/doc/libombrilo-dev/examples" -B examples -DCMAKE_PREFIX_PATH="$tree" \
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >cmake.txt || { cat cmake.txt; exit 1; }
cmake --build examples >cmake.txt || { cat cmake.txt; exit 1; }
grep -q "ombrilo_DIR:PATH=$libraries" examples/CMakeCache.txt
for program in negative negative_static scaled thumbnail; do expect "examples/$program"; done
flags=$(PKG_CONFIG_LIBDIR=$libraries/pkgconfig pkg-config --cflags --libs ombrilo)
[[ "$flags" = *"$tree"* ]] || { echo "pkg-config says: $flags"; exit 1; }
# shellcheck disable=SC2086
"$compiler" "$source/examples/thumbnail.c" -o by_pkg_config $flags
expect ./by_pkg_config
"$tree/bin/omb" apply -q "$source/tests/host/samples/rgb8_deflate.tif" out.png gray
