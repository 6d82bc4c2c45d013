#!/usr/bin/env bash
# Builds everything with warnings as errors and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build-tests -DCMAKE_BUILD_TYPE=RelWithDebInfo -DALGOLOGIC_WERROR=ON \
      -DALGOLOGIC_BUILD_TESTS=ON
cmake --build build-tests -j"$(nproc)"
ctest --test-dir build-tests --output-on-failure -j"$(nproc)"
