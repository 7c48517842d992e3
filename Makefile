# Thin: every rule calls a CMake preset or a script. Install what is missing, configure where that
# has not been done, build, run. The second time only what changed is done again.

.DEFAULT_GOAL := help
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
# Many a test waits, for a watchdog or for a silent peer.
TESTS ?= $(shell echo $$((3 * $(JOBS))))
PREFIX ?= /usr/local
ROUNDS ?= 300
# ThreadSanitizer wants the fixed layout of addresses; where a container forbids that, we go without.
FIXED_LAYOUT := $(shell setarch -R true 2>/dev/null && echo setarch -R)
export CCACHE_SLOPPINESS = pch_defines,time_macros

# $(call configured,preset): CMake's own rules notice changed build files. Ours to watch are the presets, and
# an Objective-C toolchain that was missing when the folder was configured and may be there by now.
configured = @{ test build/$(1)/build.ninja -nt CMakePresets.json \
    && ! grep -q '^TALLYFOOT_OBJC_MISSING:INTERNAL=.' build/$(1)/CMakeCache.txt; } || cmake --preset $(1)

.PHONY: help
help: ## this list
	@awk -F ':.*## ' '/^[a-z-]+:.*## / {printf "  make %-14s %s\n", $$1, $$2}' $(firstword $(MAKEFILE_LIST))

.PHONY: demo
demo: ## a local collector and a shop app: from the first touch to the confirmed upload
	@Scripts/install-dependencies build test objc
	$(call configured,release)
	@cmake --build --preset release --target tallyfoot
	@build/release/Sources/CommandLine/tallyfoot demo

.PHONY: test
test: ## build with g++ and run all tests
	@Scripts/install-dependencies build test objc
	$(call configured,release)
	@cmake --build --preset release
	@ctest --preset release --parallel $(TESTS)

.PHONY: check check-format check-layering check-warnings check-signals check-tidy
check: check-format check-layering check-warnings check-signals check-tidy ## formatting, layering, warnings as errors with both compilers, signal safety, clang-tidy
	@echo "All checks passed."

check-format:
	@Scripts/install-dependencies test check
	@Scripts/check-format

check-layering:
	@Scripts/install-dependencies test
	@Scripts/check-layering

# The builds that the tests need anyway: g++'s, and clang++'s with the sanitizers.
check-warnings:
	@Scripts/install-dependencies build test objc bench sanitize
	$(call configured,release)
	@cmake --build --preset release
	$(call configured,asan)
	@cmake --build --preset asan --target all all_verify_interface_header_sets

check-signals:
	@Scripts/install-dependencies build test objc
	$(call configured,release)
	@Scripts/check-signal-safety build/release

check-tidy:
	@Scripts/install-dependencies build test objc bench sanitize check
	$(call configured,clang)
	@Scripts/check-tidy build/clang $(JOBS)

.PHONY: format
format: ## lay out all sources the one way
	@Scripts/install-dependencies test check
	@Scripts/check-format --fix

.PHONY: test-asan test-tsan test-valgrind
test-asan: ## all tests under AddressSanitizer and UndefinedBehaviorSanitizer
	@Scripts/install-dependencies build test objc bench sanitize
	$(call configured,asan)
	@cmake --build --preset asan
	@ctest --preset asan --parallel $(TESTS)

test-tsan: ## all tests under ThreadSanitizer
	@Scripts/install-dependencies build test objc sanitize
	$(call configured,tsan)
	@$(FIXED_LAYOUT) cmake --build --preset tsan
	@$(FIXED_LAYOUT) ctest --preset tsan --parallel $(TESTS)

test-valgrind: ## ten thousand interactions in Objective-C under valgrind
	@Scripts/install-dependencies build test objc sanitize
	$(call configured,release)
	@cmake --build --preset release --target ObjCTests
	@Scripts/run-valgrind build/release

.PHONY: bench
bench: ## the ratios that the library promises, measured here
	@Scripts/install-dependencies build bench objc
	$(call configured,bench)
	@cmake --build --preset bench
	@Scripts/run-benchmarks build/bench

.PHONY: fuzz-short
fuzz-short: ## half a minute of fuzzing for each target
	@Scripts/install-dependencies build sanitize
	$(call configured,fuzz)
	@cmake --build --preset fuzz
	@Scripts/run-fuzzers build/fuzz 30

.PHONY: kill-campaign
kill-campaign: ## hundreds of kills at random moments: not one acknowledged event is missing
	@Scripts/install-dependencies build test
	$(call configured,release)
	@cmake --build --preset release --target IntegrationTests
	@TALLYFOOT_KILL_ROUNDS=$(ROUNDS) build/release/Tests/Integration/IntegrationTests --gtest_filter='*Kill*'

.PHONY: crash-campaign
crash-campaign: ## a thousand crashes at random moments, and every one at each lock and call: each is told once
	@Scripts/install-dependencies build test
	$(call configured,release)
	@cmake --build --preset release --target IntegrationTests --target CrashPointTests
	@TALLYFOOT_CRASH_STEP=1 build/release/Tests/Crash/CrashPointTests
	@TALLYFOOT_CRASH_ROUNDS=$(if $(filter file,$(origin ROUNDS)),1000,$(ROUNDS)) build/release/Tests/Integration/IntegrationTests --gtest_filter='CrashCampaign.*'

.PHONY: install
install: ## the library, its package files and the tool, below PREFIX (/usr/local)
	@Scripts/install-dependencies build test objc
	$(call configured,release)
	@cmake --build --preset release --target all
	@cmake --install build/release --prefix $(PREFIX)

.PHONY: clean
clean: ## remove everything that was built
	@rm -rf build
