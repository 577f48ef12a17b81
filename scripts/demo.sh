#!/usr/bin/env bash
# Builds the release and shows the main job: import a configuration into a fresh registry file, register the component,
# and fetch variables through it. Leaves nothing behind but build/release.
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
