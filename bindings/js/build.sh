#!/usr/bin/env bash
# Makes the package: build.sh WASM BUILD, where WASM is a build directory that holds the library for
# WebAssembly, and BUILD one that holds omb. The package is in BUILD/js/package.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$here/../..
wasm=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
package=$build/js/package

rm -rf "$build/js"
mkdir -p "$package"
cp "$here"/{package.json,index.js,index.d.ts,arguments.js,README.md} "$package"
"$build/omb" list --json >"$build/js/steps.json"
/usr/bin/python3 "$here/../describe.py" "$root/include/ombrilo/ombrilo.h" "$build/js/steps.json" \
  "$root/tools/omb/steps/color_ramps.cpp" js "$package"
exports=()
for name in malloc free $(grep -o 'omb_[A-Za-z0-9_]*' "$root/src/exports/ombrilo.def"); do
  exports+=("-Wl,--export-if-defined=$name")
done
# The stack comes first in memory, so that an operation that needs more of it stops instead of
# writing over data.
clang++ --target=wasm32-wasi -O2 -mexec-model=reactor -nodefaultlibs "${exports[@]}" \
  -Wl,-z,stack-size=262144 -Wl,--stack-first -Wl,--strip-all -Wl,--gc-sections -o "$package/ombrilo.wasm" "$wasm/libombrilo.a" -lc \
  "$(clang --target=wasm32-wasi -print-libgcc-file-name)"

# The playground with the package inside, for any server of files.
cp -r "$root/site/playground" "$build/js/playground"
cp -r "$package" "$build/js/playground/ombrilo"
# Node.js takes its files for modules by this alone.
echo '{"private": true, "type": "module"}' >"$build/js/playground/package.json"
