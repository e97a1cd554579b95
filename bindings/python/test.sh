#!/usr/bin/env bash
# Tests the wheel of build.sh: test.sh BUILD. Exit status 77: skipped, with the reason; in CI that is
# a failure.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
for module in build wheel setuptools pytest numpy PIL mypy distributed; do
  /usr/bin/python3 -c "import $module" 2>/dev/null ||
    { echo "skipped, because Python has no module $module (scripts/setup.sh python)"
      [ "${CI:-}" != true ] || exit 1
      exit 77; }
done
"$here/build.sh" "$build"
cd "$build/python"
ls -l dist
# Without numpy's own types, which take mypy twenty times as long.
/usr/bin/python3 -m mypy --strict --no-site-packages --allow-untyped-calls --ignore-missing-imports \
  --cache-dir=mypy-cache installed/ombrilo
OMB=$build/omb PYTHONPATH=$build/python/installed PYTHONDONTWRITEBYTECODE=1 \
  /usr/bin/python3 -m pytest -q -p no:cacheprovider --durations=3 "$here/tests"
