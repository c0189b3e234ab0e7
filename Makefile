# ui32: build and test entry points.
#   make check   install what is missing (as root), build every preset, run
#                every test (armhf under qemu-arm) and the ABI checks
#   make build   build the native preset only

.PHONY: check deps build clean

check: deps
	tools/check.sh

deps:
	tools/install-deps.sh

build: deps
	cmake --preset native
	cmake --build --preset native

clean:
	rm -rf build
