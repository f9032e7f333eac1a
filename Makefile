# Front door. Each target installs what is missing, configures, builds and runs.
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps configure build check demo run bench clean

all: build

deps:
	@./tools/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# Every test, each in a process of its own, on one virtual display.
check: build
	@./tools/run-tests.sh $(BUILD)

clean:
	rm -rf $(BUILD)
