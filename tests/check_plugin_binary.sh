#!/usr/bin/env bash
# Checks that the plug-in loads where FileMaker Server runs (Ubuntu 22.04 and later): it needs
# only the host library, ICU and the C and C++ runtimes (the loader included), exports only its
# entry procedure, and asks for no C library symbol newer than 2.35 nor C++ runtime symbol newer
# than 3.4.30.
set -euo pipefail
fmx="$1"
fail=0

needed=$(readelf -d "$fmx" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
for lib in $needed; do
  case "$lib" in
    libFMWrapper.so|libstdc++.so.6|libgcc_s.so.1|libc.so.6|libm.so.6) ;;
    # The C library's loader, present in every process: it serves thread-local variables
    # (__tls_get_addr), such as the per-thread count of nested calculations.
    ld-linux-*.so.*) ;;
    # Regular expressions (pattern count) come from the system's ICU.
    libicu*) ;;
    # Sanitizer builds pull in their runtimes.
    libasan.so.*|libubsan.so.*|libtsan.so.*) ;;
    *) echo "unexpected needed library: $lib"; fail=1 ;;
  esac
done
echo "$needed" | grep -qx 'libFMWrapper.so' || { echo "libFMWrapper.so is not needed"; fail=1; }

ours=$(nm -D --defined-only "$fmx" | awk '{print $3}' | grep -v -E '^(_init|_fini|__bss_start|_edata|_end)$' || true)
if [ "$ours" != "FMExternCallProc" ]; then
  echo "exported symbols other than FMExternCallProc:"; echo "$ours" | head -20; fail=1
fi

versions=$(objdump -T "$fmx" | grep -o -E '(GLIBC|GLIBCXX)_[0-9.]+' | sort -u)
for v in $versions; do
  name=${v%%_*}; num=${v#*_}
  limit=2.35; [ "$name" = GLIBCXX ] && limit=3.4.30
  if [ "$(printf '%s\n%s\n' "$num" "$limit" | sort -V | tail -n1)" != "$limit" ]; then
    echo "symbol version too new: $v"; fail=1
  fi
done

[ "$fail" = 0 ] && echo "plug-in binary OK"
exit "$fail"
