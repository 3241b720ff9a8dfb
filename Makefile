# The commands of everyday work. `make demo` and `make test` are all that a newcomer needs.
JOBS ?= $(shell nproc)

.PHONY: all deps build demo test check bench install deb check-deb clean format headers sanitize threads strict clang \
        installed fuzz

all: build

deps:
	@scripts/install-deps

build: deps
	@cmake --preset release >/dev/null
	@cmake --build build -j $(JOBS)

# Simulates a night, calibrates, aligns, stacks, levels and renders it.
demo: build
	@build/hosts/orbimg/orbimg demo -o build/demo --force

test: build
	@ctest --test-dir build --output-on-failure -j $(JOBS)

# Ours beside OpenCV, numpy, bottleneck and Pillow, one thread, one run. Ends with 1 if a limit is not kept.
bench:
	@scripts/install-deps bench
	@cmake --preset bench >/dev/null
	@cmake --build build-bench -j $(JOBS)
	@build-bench/bench/side_by_side

# Everything that must hold before a change goes in.
check: format strict clang headers test sanitize threads installed
	@echo "check: all is well"

format:
	@scripts/install-deps check
	@git ls-files '*.h' '*.cc' | xargs clang-format --dry-run -Werror

strict: deps
	@cmake --preset strict >/dev/null
	@cmake --build build-strict -j $(JOBS)

clang:
	@scripts/install-deps check
	@cmake --preset clang >/dev/null
	@cmake --build build-clang -j $(JOBS)
	@ctest --test-dir build-clang --output-on-failure -j $(JOBS)

headers: build
	@cmake --build build --target headers_alone -j $(JOBS)

# Tests under AddressSanitizer and UndefinedBehaviorSanitizer.
sanitize: deps
	@cmake --preset asan >/dev/null
	@cmake --build build-asan -j $(JOBS)
	@ctest --test-dir build-asan --output-on-failure -j $(JOBS)

# What uses threads, under ThreadSanitizer.
threads: deps
	@cmake --preset tsan >/dev/null
	@cmake --build build-tsan -j $(JOBS) --target orb_catalogue_tests
	@ctest --test-dir build-tsan --output-on-failure -R catalogue

# Each fuzzer for FUZZ_SECONDS.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install-deps check
	@cmake --preset fuzz >/dev/null
	@cmake --build build-fuzz -j $(JOBS)
	@for f in build-fuzz/fuzz/fuzz_*; do [ -x $$f ] && [ -f $$f ] && (cd build-fuzz/fuzz && ../../$$f -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=4096 -malloc_limit_mb=4096) || exit 1; done

# A program of somebody else's, built against an installed orbimg by CMake and by pkg-config.
installed: build
	@scripts/check-install build

install: build
	@cmake --install build

# build/orbimg_*.deb
deb: build
	@cd build && cpack >/dev/null && ls orbimg_*.deb

# Installs that package in a root with nothing but Debian in it, and runs it there. Needs root and the network.
check-deb: deb
	@scripts/check-deb build/orbimg_*.deb

clean:
	@rm -rf build build-*
