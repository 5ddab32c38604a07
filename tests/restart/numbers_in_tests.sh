#!/usr/bin/env bash
# Checks that each number of docs/restart.md (H1 ..., T1 ..., G1 ..., L1 ...) begins the name of a test, and that each such name has its
# number there. Called by CTest with the root of the project.
set -euo pipefail
cd "$1"
numbers=$(grep -oE '^(\| |- \*\*)[HTGL][0-9]+\b' docs/restart.md | grep -oE '[HTGL][0-9]+' | sort -u)
named=$(grep -rhoE 'TEST(_[FP])?\([A-Za-z]+, [HTGL][0-9]+_' tests | grep -oE '[HTGL][0-9]+_$' | tr -d _ | sort -u)
[ -n "$numbers" ] && [ -n "$named" ]
untested=$(comm -23 <(echo "$numbers") <(echo "$named"))
unknown=$(comm -13 <(echo "$numbers") <(echo "$named"))
if [ -n "$untested" ]; then echo "no test is named after:" $untested; fi
if [ -n "$unknown" ]; then echo "tests are named after what docs/restart.md does not have:" $unknown; fi
[ -z "$untested$unknown" ] && echo "$(wc -w <<<"$numbers") numbers, each with a test"
