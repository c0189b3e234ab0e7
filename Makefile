# ui32: build and test entry points.
#   make check    install what is missing (as root), build every preset, run
#                 every test (armhf under qemu-arm) and the ABI checks
#   make demo     build the library and the demo client, draw demo.png
#   make package  build the .deb packages (amd64, i386, armhf, armhf-neon)
#                 and check them with lintian
#   make bench    run the x86-64 and i386 benchmarks and the ARM instruction
#                 counts and write bench/RESULTS.md
#   make bench-arm  only the ARM instruction counts (their section of
#                 bench/RESULTS.md and bench/results-arm.png)
#   make fuzz     run every fuzz target on x86-64 and i386 (FUZZ_SECONDS each,
#                 default 60)
#   make build    build the native preset only (installs only the build
#                 essentials: without the peers their tests are skipped)

.PHONY: check deps build demo package bench bench-arm fuzz clean

check: deps
	tools/check.sh

deps:
	tools/install-deps.sh

build:
	tools/install-deps.sh core
	cmake --preset native
	cmake --build --preset native

demo:
	tools/demo.sh

package: deps
	tools/package.sh

bench: deps
	bench/run.sh
	bench/arm/run.sh

bench-arm: deps
	bench/arm/run.sh

fuzz: deps
	fuzz/run.sh

clean:
	rm -rf build
