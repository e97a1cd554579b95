#!/usr/bin/env bash
# Tests the package of build.sh under Node and in Chromium: test.sh WASM BUILD. Exit status 77:
# skipped, with the reason.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
for program in node npm chromium wasm-ld; do
  command -v "$program" >/dev/null ||
    { echo "skipped, because there is no $program (scripts/setup.sh web wasm)"; exit 77; }
done
[ -f "$1/libombrilo.a" ] ||
  { echo "skipped, because there is no library for WebAssembly in $1 (./dev js)"; exit 77; }
"$here/build.sh" "$1" "$2"
build=$(cd "$2" && pwd)
ls -l "$build/js/package/ombrilo.wasm"
PACKAGE=$build/js/package OMB=$build/omb node --test "$here/test/ombrilo.test.js"
mkdir "$build/js/modules"
cp "$here"/test/package*.json "$build/js/modules"
npm ci --prefix "$build/js/modules" --no-audit --no-fund --silent
node "$here/test/browser.mjs" "$build/js/playground"
