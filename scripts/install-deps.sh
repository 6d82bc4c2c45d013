#!/usr/bin/env bash
# Installs the build dependencies that are missing, through apt-get (Debian).
# Does nothing when everything is already there. Run as root.
#   bash scripts/install-deps.sh [clang] [benchmark]
# clang: Clang with libFuzzer and its sanitizer runtimes (fuzzing);
# benchmark: Google Benchmark and Python (bench/, scripts/bench_table.py).
set -euo pipefail

packages=(cmake make g++ qtbase5-dev fonts-wqy-microhei)
for extra in "$@"; do
    case "$extra" in
        clang) packages+=(clang libclang-rt-14-dev) ;;
        benchmark) packages+=(libbenchmark-dev python3) ;;
        *) echo "unknown group: $extra" >&2; exit 2 ;;
    esac
done
missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
