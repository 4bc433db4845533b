#!/bin/sh
# What has to be clean before a change lands: the format, clang-tidy, and the tests under sanitizers.
set -eu
cd "$(dirname "$0")/.."

git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
cmake --preset tidy
cmake --build --preset tidy
cmake --preset asan
cmake --build --preset asan
ctest --preset asan
