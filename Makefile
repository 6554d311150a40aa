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

.PHONY: deps configure build run test test-clang install package test-packages sanitize sanitize-address sanitize-thread test-armhf fuzz fuzz-smoke bench clean

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

# Debian packages libtavobjectmodel1, libtavobjectmodel-dev and tavknx in $(BUILD_DIR)/packages.
# They install under /usr, so the build is configured for that prefix.
package:
	@$(MAKE) build PREFIX=/usr
	@rm -rf $(BUILD_DIR)/packages
	@cd $(BUILD_DIR) && cpack -G DEB >cpack.log 2>&1 || { cat cpack.log; exit 1; }
	@ls $(BUILD_DIR)/packages/*.deb

# Checks the packages, installs them with apt-get, builds and runs the consumer example and the
# tool from the installed files, then removes the packages.
test-packages: package
	@bash tests/packaging/check-debs.sh $(BUILD_DIR)/packages $$(dpkg --print-architecture)
	@bash tests/packaging/deb-install-test.sh $(BUILD_DIR)/packages examples/consumer

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

# Cross-builds libraries, tool and tests for 32-bit ARM (armhf), runs the suite under qemu-arm,
# then builds the armhf Debian packages (for /usr) and checks them without installing them.
# GNUInstallDirs gives the multiarch library directory to native builds only: named here.
ARMHF_BUILD_DIR ?= build-armhf
test-armhf:
	@bash scripts/install-armhf-deps.sh
	@cmake -S . -B $(ARMHF_BUILD_DIR) -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/toolchain-armhf.cmake \
		-DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=lib/arm-linux-gnueabihf \
		-DTAV_WARNINGS_AS_ERRORS=$(WERROR) $(CMAKE_ARGS) >/dev/null
	@cmake --build $(ARMHF_BUILD_DIR) -j $(JOBS)
	@cd $(ARMHF_BUILD_DIR) && ctest --output-on-failure -j $(JOBS)
	@rm -rf $(ARMHF_BUILD_DIR)/packages
	@cd $(ARMHF_BUILD_DIR) && cpack -G DEB >cpack.log 2>&1 || { cat cpack.log; exit 1; }
	@bash tests/packaging/check-debs.sh $(ARMHF_BUILD_DIR)/packages armhf

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
