#!/usr/bin/env bash
# checklibraries.sh LIBRARY program...: fails when any program loads LIBRARY.
set -euo pipefail
library=$1
shift
status=0
for program in "$@"; do
    if ldd "$program" | grep -q "$library"; then
        echo "$(basename "$program") loads $library" >&2
        status=1
    fi
done
echo "$# programs checked for $library"
exit $status
