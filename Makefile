# Quick start: `make run` and `make test`. Both install missing Debian packages first.
BUILD_DIR ?= build
PREFIX ?= /usr/local
JOBS ?= $(shell nproc)
CMAKE_ARGS ?=
# Warnings are errors in CI builds (CI set in the environment, as .ci/run does and CI services
# do); elsewhere they are shown and the build goes on. WERROR=ON or OFF decides for one run.
WERROR ?= $(if $(CI),ON,OFF)
# Keeps the output of the nested builds readable.
MAKEFLAGS += --no-print-directory

.PHONY: deps configure build run test test-clang install sanitize sanitize-address sanitize-thread test-armhf fuzz fuzz-smoke bench clean

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(PREFIX) \
		-DTAV_WARNINGS_AS_ERRORS=$(WERROR) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@bash scripts/run-demo.sh $(BUILD_DIR)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# The whole suite built with clang++ (Release), warnings as errors whatever WERROR says: the
# second compiler is there to find what the first lets through.
CLANG_BUILD_DIR ?= build-clang
test-clang:
	@bash scripts/install-deps.sh clang
	@cmake -S . -B $(CLANG_BUILD_DIR) -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Release \
		-DTAV_WARNINGS_AS_ERRORS=ON $(CMAKE_ARGS) >/dev/null
	@cmake --build $(CLANG_BUILD_DIR) -j $(JOBS)
	@cd $(CLANG_BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

install: build
	@cmake --install $(BUILD_DIR) --prefix $(PREFIX)

# The whole suite under AddressSanitizer + UndefinedBehaviorSanitizer, then under ThreadSanitizer.
# Any sanitizer report ends the test program with a failure.
sanitize: sanitize-address sanitize-thread

sanitize-address: deps
	@cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DTAV_SANITIZE=address,undefined -DTAV_BUILD_TOOLS=ON \
		-DTAV_WARNINGS_AS_ERRORS=$(WERROR) $(CMAKE_ARGS) >/dev/null
	@cmake --build build-asan -j $(JOBS)
	@cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
		ctest --output-on-failure -j $(JOBS)

sanitize-thread: deps
	@cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DTAV_SANITIZE=thread \
		-DTAV_WARNINGS_AS_ERRORS=$(WERROR) $(CMAKE_ARGS) >/dev/null
	@cmake --build build-tsan -j $(JOBS)
	@cd build-tsan && TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 ctest --output-on-failure -j $(JOBS)

# Cross-builds libraries, tool and tests for 32-bit ARM (armhf) and runs the suite under qemu-arm.
ARMHF_BUILD_DIR ?= build-armhf
test-armhf:
	@bash scripts/install-armhf-deps.sh
	@cmake -S . -B $(ARMHF_BUILD_DIR) -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/toolchain-armhf.cmake \
		-DCMAKE_BUILD_TYPE=Release -DTAV_WARNINGS_AS_ERRORS=$(WERROR) $(CMAKE_ARGS) >/dev/null
	@cmake --build $(ARMHF_BUILD_DIR) -j $(JOBS)
	@cd $(ARMHF_BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# libFuzzer harnesses (clang), each for FUZZ_SECONDS; fuzz-smoke is the short run for CI.
FUZZ_SECONDS ?= 60
fuzz: deps
	@TAV_WARNINGS_AS_ERRORS=$(WERROR) bash scripts/run-fuzz.sh $(FUZZ_SECONDS)

fuzz-smoke: deps
	@TAV_WARNINGS_AS_ERRORS=$(WERROR) bash scripts/run-fuzz.sh 10

# Benchmarks, built in Release in build-bench (TAV_BENCH_LOG_LEVEL: level of the figures).
bench: deps
	@bash scripts/run-bench.sh

clean:
	@rm -rf $(BUILD_DIR) build-*
