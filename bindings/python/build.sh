#!/usr/bin/env bash
# Makes the wheel: build.sh BUILD, where BUILD is a build directory that holds the library and omb.
# The wheel is in BUILD/python/dist, the package as it is installed in BUILD/python/installed.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
# The system's interpreter, which has the system's packages.
python=/usr/bin/python3

rm -rf "$build/python"
mkdir "$build/python"
cp -r "$here/src" "$here/pyproject.toml" "$here/setup.py" "$here/README.md" "$build/python"
package=$build/python/src/ombrilo
"$build/omb" list --json >"$build/python/steps.json"
"$python" "$here/../describe.py" "$here/../../include/ombrilo/ombrilo.h" "$build/python/steps.json" \
  "$here/../../tools/omb/steps/color_ramps.cpp" python "$package"
cp -L "$build/libombrilo.so" "$package"
strip --strip-unneeded "$package/libombrilo.so"
(cd "$build/python" && "$python" -m build --wheel --no-isolation --outdir dist . >build.log 2>&1) ||
  { cat "$build/python/build.log"; exit 1; }
"$python" -m zipfile -e "$build"/python/dist/*.whl "$build/python/installed"
