# The commands a newcomer types. Each does its own set-up: packages, configure, build.
.PHONY: all deps configure build run test test-unit test-asan format bench demo package clean

JOBS ?= $(shell nproc)

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake --preset default >/dev/null

build: configure
	@cmake --build --preset default -j $(JOBS)

run: build
	./build/src/app/mirl

# A .deb of the program in build/ (cpack).
package: build
	cd build && cpack -G DEB

test: build
	ctest --preset default

test-unit: build
	ctest --preset default -L unit

test-asan: deps
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan -j $(JOBS)
	ctest --preset asan

format:
	@git ls-files --cached --others --exclude-standard '*.cpp' '*.h' | xargs -r clang-format -i

bench: build
	@set -e; for b in $$(cat build/bench/benches.txt); do echo "== $$b"; ./build/benchmarks/$$b; done

demo: build
	scripts/demo

clean:
	rm -rf build build-asan
