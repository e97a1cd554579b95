#!/usr/bin/env bash
# Tests the package of build.sh under Node and in Chromium: test.sh WASM BUILD. Exit status 77:
# skipped, with the reason; in CI that is a failure.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
skip() {
  echo "skipped, because $1"
  [ "${CI:-}" != true ] || exit 1
  exit 77
}
for program in node npm chromium wasm-ld; do
  command -v "$program" >/dev/null || skip "there is no $program (scripts/setup.sh web wasm)"
done
[ -x "$2/omb" ] || skip "there is no omb in $2 (./dev js)"
"$here/build.sh" "$1" "$2"
build=$(cd "$2" && pwd)
ls -l "$build/js/package/ombrilo.wasm"
PACKAGE=$build/js/package OMB=$build/omb node --test "$here/test/ombrilo.test.js"
# The example is a program of somebody who has installed the package.
mkdir -p "$build/js/example/node_modules"
cp "$here/../../examples/first_steps.mjs" "$build/js/example"
ln -s "$build/js/package" "$build/js/example/node_modules/ombrilo"
[ "$(node "$build/js/example/first_steps.mjs")" = "200 x 150 pixels, the first one 255 255 255" ]
mkdir "$build/js/modules"
cp "$here"/test/package*.json "$build/js/modules"
npm ci --prefix "$build/js/modules" --no-audit --no-fund --silent
node "$here/test/browser.mjs" "$build/js/playground"
