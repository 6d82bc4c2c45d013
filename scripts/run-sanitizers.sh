#!/usr/bin/env bash
# Builds with a sanitizer and runs the tests under it.
#   bash scripts/run-sanitizers.sh address   # every test, AddressSanitizer + UBSan
#   bash scripts/run-sanitizers.sh thread    # the concurrency and stress tests, TSan
# Any sanitizer report fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

sanitizer="${1:?usage: run-sanitizers.sh address|thread}"
bash scripts/install-deps.sh
dir="build-$sanitizer"
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DALGOLOGIC_WERROR=ON \
      -DALGOLOGIC_SANITIZER="$sanitizer" >/dev/null
cmake --build "$dir" -j"$(nproc)"

root="$(pwd)"
case "$sanitizer" in
    address)
        # Full allocation stacks, so that the one suppression (a leak inside
        # Qt's JSON parser) can be recognised: Qt has no frame pointers.
        export ASAN_OPTIONS="detect_leaks=1:fast_unwind_on_malloc=0:abort_on_error=0"
        export LSAN_OPTIONS="suppressions=$root/tests/lsan.supp:print_suppressions=0"
        export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
        ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"
        ;;
    thread)
        export TSAN_OPTIONS="suppressions=$root/tests/tsan.supp:second_deadlock_stack=1:halt_on_error=0"
        ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" -L "concurrency|tsan"
        ;;
    *)
        echo "unknown sanitizer: $sanitizer" >&2
        exit 2
        ;;
esac
