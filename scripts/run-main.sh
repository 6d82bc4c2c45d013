#!/usr/bin/env bash
# Builds the library and its command-line host, then runs the main job:
# replaying a bundled example session and printing the resulting model.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DALGOLOGIC_BUILD_TESTS=OFF
cmake --build build -j"$(nproc)"
./build/tools/algo-replay/algo-replay examples/twap-morning.jsonl
