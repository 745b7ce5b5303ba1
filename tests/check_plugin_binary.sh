#!/usr/bin/env bash
# Checks that the plug-in loads where FileMaker Server runs (Ubuntu 22.04 and later, x86-64 or
# aarch64): it needs only the host library, ICU and the C and C++ runtimes, exports only its entry
# procedure, and neither it nor any library bundled with it asks for a C library symbol newer than
# 2.35 or a C++ runtime symbol newer than 3.4.30.
#   check_plugin_binary.sh PLUGIN [BUNDLED_LIBRARY...]
# Only readelf is used: it reads the files of every architecture.
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
    # Regular expressions (pattern count) come from ICU.
    libicu*) ;;
    # Sanitizer builds pull in their runtimes.
    libasan.so.*|libubsan.so.*|libtsan.so.*) ;;
    *) echo "unexpected needed library: $lib"; fail=1 ;;
  esac
done
echo "$needed" | grep -qx 'libFMWrapper.so' || { echo "libFMWrapper.so is not needed"; fail=1; }

# Defined global dynamic symbols, without their version suffixes.
ours=$(readelf --dyn-syms -W "$fmx" |
  awk '$1 ~ /^[0-9]+:$/ && $7 != "UND" && $5 != "LOCAL" { sub(/@.*/, "", $8); print $8 }' |
  grep -v -E '^(_init|_fini|__bss_start|_edata|_end)$' || true)
if [ "$ours" != "FMExternCallProc" ]; then
  echo "exported symbols other than FMExternCallProc:"; echo "$ours" | head -20; fail=1
fi

for file in "$@"; do
  # The versions the file asks of other libraries (not those it defines itself).
  versions=$(readelf -V -W "$file" | sed -n '/Version needs section/,$p' |
    grep -o -E '(GLIBC|GLIBCXX)_[0-9.]+' | sort -u || true)
  for v in $versions; do
    name=${v%%_*}; num=${v#*_}
    limit=2.35; [ "$name" = GLIBCXX ] && limit=3.4.30
    if [ "$(printf '%s\n%s\n' "$num" "$limit" | sort -V | tail -n1)" != "$limit" ]; then
      echo "symbol version too new in $(basename "$file"): $v"; fail=1
    fi
  done
done

[ "$fail" = 0 ] && echo "plug-in binary OK ($(readelf -h "$fmx" | sed -n 's/.*Machine: *//p'))"
exit "$fail"
