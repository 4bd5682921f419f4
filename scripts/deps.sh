#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the tools need
# (only those missing).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh \
  build-essential cmake ninja-build pkg-config \
  libgtest-dev libgmock-dev libbenchmark-dev \
  libpng-dev libtiff-dev liblcms2-dev libcups2-dev
