#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks that each number of docs/hosts.md (H1 ..., T1 ..., G1 ..., L1 ...) appears at the beginning of a test's name,
# and that each number in such a name is on that page. It asks the built programs for the names, so a test that is not
# compiled does not count. CTest calls it with the root of the project and the programs.
set -euo pipefail
cd "$1"
shift
numbers=$(grep -oE '^- \*\*[HTGL][0-9]+\b' docs/hosts.md | grep -oE '[HTGL][0-9]+' | sort -u)
named=$(for program in "$@"; do "$program" --gtest_list_tests; done | grep -oE '^  ([HTGL][0-9]+_)+' | grep -oE '[HTGL][0-9]+' | sort -u)
[ -n "$numbers" ] && [ -n "$named" ]
untested=$(comm -23 <(echo "$numbers") <(echo "$named"))
unknown=$(comm -13 <(echo "$numbers") <(echo "$named"))
if [ -n "$untested" ]; then echo "no test is named after: ${untested//$'\n'/ }"; fi
if [ -n "$unknown" ]; then echo "tests are named after what docs/hosts.md does not have: ${unknown//$'\n'/ }"; fi
[ -z "$untested$unknown" ] && echo "$(wc -w <<<"$numbers") numbers, each with a test"
