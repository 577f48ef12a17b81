#!/usr/bin/env bash
# Builds the release and shows the main job: import a configuration into a fresh registry file, register the component,
# fetch variables through it, draw the whole and reset a domain before a run. Leaves nothing behind but build/release.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

cmake --preset release > /dev/null
cmake --build --preset release --target moxel moxel-command fetch_variables

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export MOXEL_REGISTRY="$folder/registry.db"
moxel=build/release/bin/moxel
fetch=build/release/bin/fetch_variables

echo
echo "== Import examples/configuration.reg and register the component"
$moxel registry import examples/configuration.reg
$moxel register

echo
echo "== Variables of the domain Sales"
for name in Region Invoices Printed MailPassword RunDate Average NoSuchVariable; do
  $fetch domain Sales "$name"
done

echo
echo "== Variables of the scenario Night"
for name in Greeting Attempts Locked Token Start Ratio NoSuchVariable; do
  $fetch scenario Night "$name"
done

echo
echo "== What the registry holds of one of them: a password is never stored in clear"
$moxel registry query 'Domain\Sales\Var\MailPassword'

echo
echo "== The whole configuration"
$moxel tree

echo
echo "== Reset the domain Sales before a run, with its variables: what changes in the registry"
$moxel registry export --format regedit4 -o "$folder/before.reg"
$moxel domain reset Sales --variables --scenario-variables
$moxel registry export --format regedit4 -o "$folder/after.reg"
# The files are in code page 1252, whose unassigned codes, which scrambled passwords use, are left out here.
for file in before after; do
  { iconv -c -f cp1252 -t utf-8 "$folder/$file.reg" || true; } | tr -d '\r' > "$folder/$file.txt"
done
diff -U1 -F '^\[' --label before --label after "$folder/before.txt" "$folder/after.txt" || true
