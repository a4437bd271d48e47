#!/usr/bin/env bash
# The dynamic symbols a shared library defines, demangled, sorted, one per line.
#   symbols.sh list LIB              print them
#   symbols.sh check LIB ALLOWLIST   fail unless they equal the allow-list, or when any belongs to
#                                    qxnum::detail, pugixml or muparser
set -euo pipefail

list() {
  # Skips absolute symbols (version nodes) and the linker's section markers.
  LC_ALL=C "${NM:-nm}" -D --defined-only -C "$1" |
    awk '$2 != "A" { sub(/^[^ ]* [^ ]* /, ""); print }' |
    grep -Ev '^(_init|_fini|_edata|_end|__bss_start)$' |
    LC_ALL=C sort -u
}

case "${1:-}" in
list)
  list "$2"
  ;;
check)
  lib=$2 allow=$3
  actual=$(list "$lib")
  [ -n "$actual" ] || { echo "no dynamic symbols read from $lib" >&2; exit 1; }
  status=0
  # Internals and private dependencies never leave the library, whatever the list says.
  if leaked=$(grep -E 'qxnum::detail::|(^|[^[:alnum:]_])(pugi|mu)::|pugixml|muParser' <<<"$actual"); then
    echo "$lib exports internals or private dependencies:" >&2
    echo "$leaked" >&2
    status=1
  fi
  if ! diff -u "$allow" <(echo "$actual") >&2; then
    echo "$lib: dynamic symbols differ from $allow (- listed, + exported)." >&2
    echo "After a deliberate API change run scripts/update-symbols.sh and review the diff." >&2
    status=1
  fi
  exit $status
  ;;
*)
  echo "usage: $0 list LIB | check LIB ALLOWLIST" >&2
  exit 2
  ;;
esac
