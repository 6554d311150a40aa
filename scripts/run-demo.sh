#!/usr/bin/env bash
# Runs the demo of the library on its bundled sample data.
set -euo pipefail
build="${1:-build}"
if [ -x "$build/tools/tavknx/tavknx" ]; then
  exec "$build/tools/tavknx/tavknx" demo
fi
exec "$build/examples/tavexample"
