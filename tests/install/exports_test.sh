#!/bin/sh
# Compares the dynamic symbols a shared library defines with the functions a header declares
# with RAVELO_API; any difference (a leaked internal or standard-library symbol, or an interface
# function missing) fails.
set -eu
library=$1 header=$2
exported=$(nm -D --defined-only "$library" | awk '{print $NF}' | sed 's/@.*//' | sort -u)
declared=$(grep -o '^RAVELO_API [^(]*(' "$header" | sed 's/ *($//; s/.*[ *]//' | sort -u)
if [ "$exported" != "$declared" ]; then
    echo "exported but not declared:"; echo "$exported" | grep -vxF "$declared" || true
    echo "declared but not exported:"; echo "$declared" | grep -vxF "$exported" || true
    exit 1
fi
echo "$(echo "$exported" | wc -l) symbols, all declared in the header"
