# Front door. Each target installs what is missing, configures, builds and runs.
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
# cmake --build runs make again; its "Entering directory" lines are only noise here.
MAKEFLAGS += --no-print-directory

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

# The stand-in Mail with the plug-in playing a scripted day on the sample store.
demo: build
	@./tools/demo.sh $(BUILD)

# The same, on your own display, for trying it by hand.
run: build
	@./tools/run.sh $(BUILD)

# Benchmarks of the plug-in inside the stand-in Mail.
bench: build
	@./tools/bench.sh $(BUILD)

clean:
	rm -rf $(BUILD)
