#!/bin/sh
# What has to be clean before a change lands: the format, clang-tidy, and the tests under sanitizers.
set -eu
cd "$(dirname "$0")/.."

git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
cmake --preset tidy
# Reads the sources by the units they are compiled in, without compiling them.
run-clang-tidy -quiet -p build/tidy "$PWD/(build/tidy/.*/Unity|src|tools|library|tests|bench)/" >build/tidy/findings 2>/dev/null || {
    grep -v "^clang-tidy" build/tidy/findings
    exit 1
}
cmake --preset asan
cmake --build --preset asan
ctest --preset asan
