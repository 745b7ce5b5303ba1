#!/usr/bin/env bash
# One entry point for building Ravelin on Debian 12: installs what is missing, configures and
# builds, then runs the demo, the tests or the benchmarks.
#   tools/dev.sh demo    build the plug-in and fmsim, and run the demo
#   tools/dev.sh test    build and run every test, plain and under the sanitizers
#   tools/dev.sh bench   build and run the benchmarks
#   tools/dev.sh package build Ravelin-VERSION-linux-x86_64.tar.gz, the folder for a server
#   tools/dev.sh fuzz [SECONDS]   build the fuzzers with clang and run each for SECONDS (60)
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
packages=(g++ cmake make binutils libicu-dev libsqlite3-dev libgtest-dev libgmock-dev libbenchmark-dev
  libboost1.81-dev libedit-dev libssl-dev nlohmann-json3-dev pkg-config)

install_missing() {
  local missing=()
  for p in "${packages[@]}" "$@"; do
    dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  fi
}

configure() {  # configure DIR BUILD_TYPE [cmake options...]
  local dir=$1 type=$2; shift 2
  cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE="$type" "$@" >/dev/null
}

build() {  # build DIR BUILD_TYPE [cmake options...]: everything, tests included
  configure "$@"
  cmake --build "$1" -j "$jobs"
}

run_tests() {  # run_tests DIR
  (cd "$1" && ctest --output-on-failure -j "$jobs" --timeout 300)
}

case "${1:-}" in
  demo)
    install_missing
    # fmsim brings the plug-in with it; the tests are not needed to run the demo.
    configure "$root/build" Release
    cmake --build "$root/build" --target fmsim -j "$jobs"
    bash "$root/demo/run.sh" "$root/build"
    ;;
  test)
    # The HTML checks render in a real browser and parse with an HTML5 parser.
    install_missing chromium python3-html5lib
    # The configuration users build, then the sanitizers (with debug information for their
    # reports). Our own checks treat warnings as errors.
    build "$root/build" Release -DRAVELIN_WERROR=ON
    run_tests "$root/build"
    build "$root/build-asan" RelWithDebInfo -DRAVELIN_WERROR=ON -DRAVELIN_SANITIZE=address,undefined
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 run_tests "$root/build-asan"
    build "$root/build-tsan" RelWithDebInfo -DRAVELIN_WERROR=ON -DRAVELIN_SANITIZE=thread
    TSAN_OPTIONS="halt_on_error=1 suppressions=$root/tools/tsan.supp" run_tests "$root/build-tsan"
    ;;
  bench)
    install_missing sqlite3 time
    build "$root/build-bench" Release -DBUILD_TESTING=OFF
    cmake --build "$root/build-bench" --target ravelin_bench -j "$jobs"
    (cd "$root/build-bench" && ./ravelin_bench "${@:2}")
    ;;
  package)
    install_missing
    version=$(sed -n 's/^project(Ravelin VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
    name="Ravelin-$version-linux-$(uname -m)"
    configure "$root/build" Release
    cmake --build "$root/build" --target Ravelin -j "$jobs"
    staging=$(mktemp -d)
    trap 'rm -rf "$staging"' EXIT
    cmake --install "$root/build" --prefix "$staging/$name" --component plugin
    bash "$root/tests/check_plugin_binary.sh" "$staging/$name/Ravelin.fmx"
    tar -C "$staging" -czf "$root/$name.tar.gz" "$name"
    echo "$root/$name.tar.gz"
    ;;
  fuzz)
    # libFuzzer and the sanitizer runtimes come with clang's runtime package, which Debian
    # recommends but does not install without recommends.
    install_missing clang libclang-rt-14-dev
    CC=clang CXX=clang++ build "$root/build-fuzz" RelWithDebInfo -DRAVELIN_FUZZ=ON \
      -DRAVELIN_SANITIZE=address,undefined -DBUILD_TESTING=OFF
    for fuzzer in "$root"/build-fuzz/*_fuzz; do
      name=$(basename "$fuzzer" _fuzz)
      # New findings go to a working copy of the corpus; the seeds in fuzz/corpus stay as they are.
      mkdir -p "$root/build-fuzz/corpus/$name"
      cp -n "$root/fuzz/corpus/$name"/* "$root/build-fuzz/corpus/$name"/ 2>/dev/null || true
      (cd "$root/build-fuzz" && "$fuzzer" -max_total_time="${2:-60}" -timeout=10 \
        -rss_limit_mb=4096 "corpus/$name")
    done
    ;;
  *)
    echo "usage: tools/dev.sh demo|test|bench|package|fuzz" >&2
    exit 2
    ;;
esac
