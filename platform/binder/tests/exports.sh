#!/bin/sh
# exports.sh LIBRARY HEADERS: fails unless the library exports exactly the functions that the headers in the folder declare.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
nm -D --defined-only "$1" | awk '{ print $NF }' | sort >"$folder/exported"
# A declaration begins in the first column; a template or an inline function is no export.
find "$2" -name '*.h' ! -name '*_utils.h' -exec cat {} + | grep -E '^[[a-zA-Z]' | grep -vE '^(typedef|inline|template|struct)' |
    sed 's/^\[\[.*\]\] //' | grep -oE '^[a-zA-Z][a-zA-Z0-9_ *]* \*?A[A-Za-z]+_[A-Za-z0-9_]+\(' |
    grep -oE 'A[A-Za-z]+_[A-Za-z0-9_]+\($' | tr -d '(' | sort -u >"$folder/declared"
diff "$folder/declared" "$folder/exported"
