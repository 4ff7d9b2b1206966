# Top-level entry points. `make demo` and `make test` install what is missing
# (scripts/install-deps.sh), configure, build, then render or test.

JOBS       ?= $(shell nproc)
BUILD      ?= build
ASAN_BUILD ?= build-asan
TSAN_BUILD ?= build-tsan
# The threaded tests that ThreadSanitizer checks: only their targets are
# built there, and CTest runs the tests labelled "concurrency".
TSAN_TARGETS := memory_cache_test greedy_cra_test work_item_test
BUILD_TYPE ?= RelWithDebInfo

.PHONY: all deps configure build demo test test-plain test-asan test-tsan check-header32 fuzz-short bench clean

all: build

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) > $(BUILD).configure.log || (cat $(BUILD).configure.log; exit 1)

build: configure
	cmake --build $(BUILD) -j$(JOBS)

demo: build
	@bash scripts/demo.sh $(BUILD)

test: test-plain test-asan test-tsan check-header32 fuzz-short

test-plain: build
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTR_SANITIZE=ON \
	  -DTR_BUILD_BENCH=OFF -DTR_BUILD_TOOLS=ON > $(ASAN_BUILD).configure.log || (cat $(ASAN_BUILD).configure.log; exit 1)
	cmake --build $(ASAN_BUILD) -j$(JOBS)
	cd $(ASAN_BUILD) && ctest --output-on-failure -j$(JOBS)

test-tsan: deps
	@cmake -S . -B $(TSAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTR_TSAN=ON \
	  -DTR_BUILD_BENCH=OFF -DTR_BUILD_TOOLS=OFF > $(TSAN_BUILD).configure.log || (cat $(TSAN_BUILD).configure.log; exit 1)
	cmake --build $(TSAN_BUILD) -j$(JOBS) --target $(TSAN_TARGETS)
	cd $(TSAN_BUILD) && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -L concurrency

check-header32: deps
	@bash scripts/check-header32.sh

fuzz-short: deps
	@bash scripts/fuzz-short.sh

bench: build
	@bash scripts/bench.sh $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(TSAN_BUILD) build-fuzz out *.configure.log
