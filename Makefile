# Quick start: `make run` and `make test`. Both install missing Debian packages first.
BUILD_DIR ?= build
PREFIX ?= /usr/local
JOBS ?= $(shell nproc)
CMAKE_ARGS ?=

.PHONY: deps configure build run test install sanitize clean

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(PREFIX) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@bash scripts/run-demo.sh $(BUILD_DIR)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

install: build
	@cmake --install $(BUILD_DIR) --prefix $(PREFIX)

clean:
	@rm -rf $(BUILD_DIR) build-*
