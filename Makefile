# make run      installs what is missing, builds, and opens the program
# make test     the same, and runs all tests
# make build    the programs in build/release/bin/
# make test-windows  builds for Windows and runs the tests under Wine
# make windows  the installer for Windows, in build/package/
# make check    format, clang-tidy and the tests under sanitizers
# make package  the Debian package, in build/package/
# make bench    the benchmarks

.PHONY: run test test-windows windows build check bench package dependencies

run: build
	scripts/run.sh

build: dependencies
	cmake --preset release
	cmake --build --preset release --target vantrel vantrel-headless vantrel-solve vantrel-catalog vantrel-solver manual

test: dependencies
	cmake --preset release
	cmake --build --preset release
	ctest --preset release

test-windows:
	scripts/test_windows.sh

windows:
	scripts/windows_installer.sh

check:
	scripts/install_dependencies.sh check
	scripts/check.sh

bench: dependencies
	cmake --preset bench
	cmake --build --preset bench
	scripts/bench.sh

package:
	scripts/install_dependencies.sh package
	cmake --preset release
	cmake --build --preset release --target vantrel vantrel-headless vantrel-solve vantrel-catalog vantrel-solver manual
	cd build/release && cpack

dependencies:
	scripts/install_dependencies.sh
