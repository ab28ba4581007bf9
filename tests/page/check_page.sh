#!/usr/bin/env bash
# The page in a browser: check_page.sh COMMAND FOLDER. What the tests need from npm is put into FOLDER once.
set -euo pipefail
command=$1 folder=$2
tests=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
mkdir -p "$folder"
cp "$tests"/{package.json,*.mjs} "$folder"
cd "$folder"
if ! cmp -s package.json node_modules/.wanted; then
    npm install --no-package-lock --no-audit --no-fund --loglevel=error
    cp package.json node_modules/.wanted
fi
VELQUOR_COMMAND=$command VELQUOR_ROOT=$tests/../.. node --test
