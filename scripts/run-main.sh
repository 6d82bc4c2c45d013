#!/usr/bin/env bash
# Builds the library and its command-line host, then runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DALGOLOGIC_BUILD_TESTS=OFF
cmake --build build -j"$(nproc)"
./build/tools/algologic-info/algologic-info
