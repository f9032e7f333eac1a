# Front door. Each target installs what is missing, configures, builds and runs.
BUILD ?= build
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
FUZZ_SECONDS ?= 300
# cmake --build runs make again; its "Entering directory" lines are only noise here.
MAKEFLAGS += --no-print-directory

.PHONY: all deps configure build demo-build check demo run bench fuzz check-asan memcheck clean

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

# The demo needs only the plug-in and the stand-in Mail, not the tests or benchmarks.
demo-build: configure
	@cmake --build $(BUILD) -j $(JOBS) --target Lorvane MailHost

# The stand-in Mail with the plug-in playing a scripted day on the sample store.
demo: demo-build
	@./tools/demo.sh $(BUILD)

# The same, on your own display, for trying it by hand.
run: demo-build
	@./tools/run.sh $(BUILD)

# Benchmarks of the plug-in inside the stand-in Mail, from an optimised build of their own.
RELEASE_BUILD ?= build-release
bench:
	@$(MAKE) build BUILD=$(RELEASE_BUILD) CMAKE_FLAGS=-DCMAKE_BUILD_TYPE=Release
	@./tools/bench.sh $(RELEASE_BUILD)

# The files Lorvane reads and days in Mail, fuzzed FUZZ_SECONDS per target (or FUZZ_RUNS inputs;
# FUZZ_FROM=empty starts from nothing; FUZZ_TARGETS="day" runs only those named); failing
# inputs go to fuzz/regressions. 200,000 days from nothing:
#   make fuzz FUZZ_TARGETS=day FUZZ_RUNS=200000 FUZZ_FROM=empty
fuzz: build
	@FUZZ_SECONDS=$(FUZZ_SECONDS) FUZZ_RUNS=$(FUZZ_RUNS) FUZZ_FROM=$(FUZZ_FROM) FUZZ_TARGETS="$(FUZZ_TARGETS)" ./tools/fuzz.sh $(BUILD)

# The tests again, built with AddressSanitizer and UndefinedBehaviorSanitizer in a folder of
# their own; any sanitizer report fails the run.
ASAN_BUILD ?= build-asan
check-asan:
	@LORVANE_EXTRA_PACKAGES=libclang-rt-dev $(MAKE) build BUILD=$(ASAN_BUILD) CMAKE_FLAGS=-DLORVANE_SANITIZE=ON
	@./tools/check-asan.sh $(ASAN_BUILD)

# The demo's day under valgrind's memcheck, from a debug build of its own. Valgrind 3.19
# cannot read the DWARF 5 that clang 14 writes by default; libc6-dbg names the loader's frames.
MEMCHECK_BUILD ?= build-memcheck
memcheck:
	@LORVANE_EXTRA_PACKAGES="valgrind libc6-dbg" $(MAKE) configure BUILD=$(MEMCHECK_BUILD) \
		CMAKE_FLAGS="-DCMAKE_BUILD_TYPE=Debug -DCMAKE_OBJCXX_FLAGS=-gdwarf-4"
	@cmake --build $(MEMCHECK_BUILD) -j $(JOBS) --target MailHost Lorvane
	@./tools/memcheck.sh $(MEMCHECK_BUILD)

clean:
	rm -rf $(BUILD)
