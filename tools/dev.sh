#!/usr/bin/env bash
# One entry point for building Ravelin on Debian 12: installs what is missing, configures and
# builds, then runs the demo, the tests or the benchmarks.
#   tools/dev.sh demo     build the plug-in and fmsim, and run the demo
#   tools/dev.sh test     build and run every test: plain, under the sanitizers, and built for
#                         aarch64 under emulation
#   tools/dev.sh test-arm only the aarch64 build and its tests, under emulation
#   tools/dev.sh bench    build and run the benchmarks
#   tools/dev.sh package  build Ravelin-VERSION-linux-x86_64.tar.gz and
#                         Ravelin-VERSION-linux-aarch64.tar.gz, the folders for a server
#   tools/dev.sh fuzz [SECONDS]   build the fuzzers with clang and run each for SECONDS (60)
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
packages=(g++ cmake make binutils libicu-dev libsqlite3-dev libgtest-dev libgmock-dev libbenchmark-dev
  libboost1.81-dev libedit-dev libssl-dev nlohmann-json3-dev pkg-config icu-devtools)
# The aarch64 build: Debian's cross compiler, the target's libraries from the arm64 architecture
# (multiarch) and the user-mode emulator that runs its tests.
arm_packages=(g++-aarch64-linux-gnu qemu-user libicu-dev:arm64 libsqlite3-dev:arm64
  libedit-dev:arm64 libssl-dev:arm64 libgtest-dev:arm64 libgmock-dev:arm64)
# The configuration users build, with our own checks' warnings as errors; the demo, the tests and
# the package all build it in build/, so each reuses the objects the others built.
release=(Release -DRAVELIN_WERROR=ON)

installed() {  # installed PACKAGE[:ARCH]: without an architecture, the machine's own or "all"
  local want=${1#*:}
  [ "$want" = "$1" ] && want="$(dpkg --print-architecture)|all"
  dpkg-query -W -f='${Architecture} ${db:Status-Abbrev}\n' "$1" 2>/dev/null |
    grep -qE "^($want) ii"
}

install_missing() {
  local missing=()
  for p in "${packages[@]}" "$@"; do
    installed "$p" || missing+=("$p")
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

run_tests() {  # run_tests DIR [ctest options...]
  local dir=$1; shift
  (cd "$dir" && ctest --output-on-failure -j "$jobs" --timeout 300 "$@")
}

install_arm() {
  dpkg --print-foreign-architectures | grep -qx arm64 || dpkg --add-architecture arm64
  install_missing "${arm_packages[@]}"
}

# configure_arm: the aarch64 cross build in build-arm (see cmake/aarch64-linux-gnu.cmake).
configure_arm() {
  configure "$root/build-arm" "${release[@]}" --toolchain "$root/cmake/aarch64-linux-gnu.cmake"
}

# test_arm: every test of the aarch64 build, under emulation. Label "plugin" selects the tests of
# the plug-in itself (ctest -L plugin) where only those are wanted.
test_arm() {
  configure_arm
  cmake --build "$root/build-arm" -j "$jobs"
  run_tests "$root/build-arm"
}

# package_dir BUILD_DIR ARCH: the plug-in's folder, checked, as Ravelin-VERSION-linux-ARCH.tar.gz.
package_dir() {
  local version name staging
  version=$(sed -n 's/^project(Ravelin VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
  name="Ravelin-$version-linux-$2"
  staging=$(mktemp -d)
  cmake --install "$1" --prefix "$staging/$name" --component plugin >/dev/null
  bash "$root/tests/check_plugin_binary.sh" "$staging/$name/Ravelin.fmx" "$staging/$name"/lib*
  tar -C "$staging" -czf "$root/$name.tar.gz" "$name"
  rm -rf "$staging"
  echo "$root/$name.tar.gz"
}

case "${1:-}" in
  demo)
    install_missing
    # fmsim brings the plug-in with it; the tests are not needed to run the demo.
    configure "$root/build" "${release[@]}"
    cmake --build "$root/build" --target fmsim -j "$jobs"
    bash "$root/demo/run.sh" "$root/build"
    ;;
  test)
    # The HTML checks render in a real browser and parse with an HTML5 parser.
    install_missing chromium python3-html5lib python3-tinycss2
    install_arm
    # The configuration users build, then the sanitizers (with debug information for their
    # reports). Our own checks treat warnings as errors.
    build "$root/build" "${release[@]}"
    run_tests "$root/build"
    # Every test again, built for aarch64 and run under emulation (about five minutes).
    test_arm
    build "$root/build-asan" RelWithDebInfo -DRAVELIN_WERROR=ON -DRAVELIN_SANITIZE=address,undefined
    # intercept_tls_get_addr=0: this toolchain's leak checker can record a bogus range for a
    # module's dynamic thread-local storage (the plug-in's, loaded by dlopen) and crash reading
    # it at exit; without the interception that range is never recorded.
    ASAN_OPTIONS=detect_leaks=1:intercept_tls_get_addr=0 UBSAN_OPTIONS=print_stacktrace=1 \
      run_tests "$root/build-asan"
    build "$root/build-tsan" RelWithDebInfo -DRAVELIN_WERROR=ON -DRAVELIN_SANITIZE=thread
    TSAN_OPTIONS="halt_on_error=1 suppressions=$root/tools/tsan.supp" run_tests "$root/build-tsan"
    # Clang builds the plug-in and the host, checking the locks the code declares
    # (fmlib/thread_annotations.h); nothing runs in this build.
    install_missing clang
    CC=clang CXX=clang++ configure "$root/build-clang" Release -DRAVELIN_WERROR=ON \
      -DBUILD_TESTING=OFF -DCMAKE_CXX_FLAGS=-Wthread-safety
    cmake --build "$root/build-clang" --target Ravelin FMWrapper -j "$jobs"
    ;;
  test-arm)
    install_missing chromium python3-html5lib python3-tinycss2
    install_arm
    test_arm
    ;;
  bench)
    install_missing sqlite3 time
    build "$root/build-bench" Release -DBUILD_TESTING=OFF
    cmake --build "$root/build-bench" --target ravelin_bench -j "$jobs"
    (cd "$root/build-bench" && ./ravelin_bench "${@:2}")
    ;;
  cost)
    # Instructions per unit of work under callgrind; `--write docs/performance.md` keeps the table.
    install_missing valgrind
    configure "$root/build" "${release[@]}"
    cmake --build "$root/build" --target ravelin_cost -j "$jobs"
    python3 "$root/tools/cost.py" "$root/build" "${@:2}"
    ;;
  package)
    install_missing
    install_arm
    configure "$root/build" "${release[@]}"
    cmake --build "$root/build" --target Ravelin -j "$jobs"
    package_dir "$root/build" "$(uname -m)"
    configure_arm
    cmake --build "$root/build-arm" --target Ravelin -j "$jobs"
    package_dir "$root/build-arm" aarch64
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
    echo "usage: tools/dev.sh demo|test|test-arm|bench|cost|package|fuzz" >&2
    exit 2
    ;;
esac
