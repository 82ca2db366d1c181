#!/usr/bin/env bash
# The example in README.md compiles, runs and prints what stands there.
# Usage: readme_example.sh SOURCE_DIR BUILD_DIR JAVAC JAVA
set -euo pipefail
readme=$1/README.md
build=$2
javac=$3
java=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The Java block, and what the block after it shows below its commands.
awk '/^```java$/ { on = 1; next } /^```$/ { on = 0 } on' "$readme" >"$work/ListTargets.java"
awk '/^```java$/ { found = 1; next } found && /^```$/ { fences++; next } fences == 2 && !/^\$/' "$readme" >"$work/expected"
[ -s "$work/expected" ]

"$javac" --release 17 -Xlint:all -Werror -d "$work" -cp "$build/share/java/tavoiscsi.jar" "$work/ListTargets.java"
cd "$build/lib/vdsdm"
TAVO_ADAPTER_FLASH=$work "$java" -Djava.library.path=.. -cp "../../share/java/tavoiscsi.jar:$work" ListTargets \
  >"$work/printed"
head -n "$(wc -l <"$work/expected")" "$work/printed" | diff "$work/expected" -
