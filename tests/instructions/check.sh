#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check.sh PROGRAM FIGURES: fails when a hot path has become more than 2 % dearer than its recorded figure.
#
# Why      time on shared machines says little below some percent; the count of instructions is the same every time.
# Counted  by callgrind, inside one function of PROGRAM, without the processor's wide vectors: so every machine runs
#          the same code of the C library.
# Figures  a line a scenario, "name instructions". Who makes a path dearer with a reason, or cheaper, writes the new
#          figure there in the same commit; it is printed below.
# Exit     0 fine, 1 dearer, 77 where it can't be counted (no valgrind)
set -euo pipefail

program=$1
figures=$2
if ! command -v valgrind >/dev/null; then
  echo "left out: there is no valgrind"
  exit 77
fi
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-AVX,-AVX2_Usable,-AVX_Fast_Unaligned_Load,-ERMS,-SSE4_2,-SSSE3,-BMI2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

status=0
while read -r scenario recorded; do
  [[ $scenario != "#"* && -n $scenario ]] || continue
  if ! valgrind --tool=callgrind --toggle-collect=vMeasured --callgrind-out-file="$folder/out" \
    "$program" "$scenario" >"$folder/log" 2>&1; then
    cat "$folder/log"
    echo "$scenario: could not be counted"
    exit 1
  fi
  counted=$(awk '/Collected :/ { print $NF }' "$folder/log")
  percent=$(awk -v a="$counted" -v b="$recorded" 'BEGIN { printf "%+.2f", (a / b - 1) * 100 }')
  echo "$scenario $counted   recorded $recorded   $percent %"
  if ((counted > recorded + recorded * 2 / 100)); then
    echo "$scenario has become dearer: make it cheaper, or record the new figure with the reason"
    status=1
  fi
done <"$figures"
exit "$status"
