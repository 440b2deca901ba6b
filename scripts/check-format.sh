#!/usr/bin/env bash
# Fails when a C++ file of the project is out of the repository's format.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
if ! command -v clang-format >/dev/null; then
    echo "clang-format not found: install it (scripts/install-deps.sh)" >&2
    exit 1
fi
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    mapfile -t files < <(git ls-files --cached --others --exclude-standard \
        '*.cpp' '*.h' | while read -r f; do [[ -f "$f" ]] && echo "$f"; done)
else
    mapfile -t files < <(find src tests bench -name '*.cpp' -o -name '*.h')
fi
clang-format --dry-run -Werror "${files[@]}"
echo "${#files[@]} files in format"
