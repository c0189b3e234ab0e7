# ui32: build and test entry points.
#   make check    install what is missing (as root), build every preset, run
#                 every test (armhf under qemu-arm) and the ABI checks
#   make demo     build the library and the demo client, draw demo.png
#   make package  build the .deb packages (amd64 and armhf)
#   make bench    run the benchmarks and write bench/RESULTS.md
#   make fuzz     run every fuzz target on x86-64 and i386 (FUZZ_SECONDS each,
#                 default 60)
#   make build    build the native preset only

.PHONY: check deps build demo package bench fuzz clean

check: deps
	tools/check.sh

deps:
	tools/install-deps.sh

build: deps
	cmake --preset native
	cmake --build --preset native

demo: deps
	tools/demo.sh

package: deps
	tools/package.sh

bench: deps
	bench/run.sh

fuzz: deps
	fuzz/run.sh

clean:
	rm -rf build
