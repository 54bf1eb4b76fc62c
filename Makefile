# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# A thin cover over CMake. `make run` and `make test` do all that is needed from a bare clone.

PRESET ?= release
JOBS ?= $(shell nproc)
BUILD = build$(if $(filter-out release,$(PRESET)),-$(PRESET))

# Used for a new build folder only; an existing one keeps the generator that it was made with.
export CMAKE_GENERATOR ?= Ninja

.PHONY: run test checks build install-packages configure asan tsan clang tidy format format-check benchmarks clean

run: TARGETS = --target main_job
run: build
	$(BUILD)/examples/main_job $(BUILD)/mandelbrot.png

# Parts of the whole: the package for Python, in build/python, and an example in C++, in build/examples.
.PHONY: python nbody
python: TARGETS = --target python_binding
nbody: TARGETS = --target nbody
python nbody: build

test: build
	ctest --preset $(PRESET)

# What else a change has to pass, as far as it takes minutes: the form, the other compiler's warnings, which are errors,
# and the tests without a device under the address and undefined behaviour sanitizers.
checks: format-check
	$(MAKE) build PRESET=clang
	$(MAKE) build PRESET=asan
	ctest --preset asan -L 'unit|scripted|pipeline'

build: configure
	cmake --build --preset $(PRESET) --parallel $(JOBS) $(TARGETS)

configure: install-packages
	cmake --preset $(PRESET)

install-packages:
	scripts/install-packages

asan tsan:
	$(MAKE) test PRESET=$@

clang:
	scripts/install-packages --checks
	$(MAKE) test PRESET=clang

# Every fault at every point, and ten million operations of 32 threads: some minutes, on two processors that are free.
.PHONY: sweeps soak
sweeps: TARGETS = --target sweeps_qv --target sweeps_opencl
sweeps: build
	for face in qv opencl; do for sweep in allocations calls both schedules; do \
	  for setting in '' TARVA_SCHEDULER=concurrent; do echo "$$sweep over $$face $$setting"; \
	    env $$setting $(BUILD)/tests/sweeps/sweeps_$$face $$sweep long || exit 1; \
	done; done; done
soak: TARGETS = --target device_pipeline_test
soak: build
	scripts/soak $(BUILD) docs/reliability

# What share of the lines and branches the tests run: all of them, without optimisation.
.PHONY: coverage
coverage:
	scripts/install-packages --checks
	scripts/install-packages --coverage
	$(MAKE) build PRESET=coverage
	scripts/coverage build-coverage $(JOBS)

tidy:
	scripts/install-packages --checks
	$(MAKE) build PRESET=tidy

.PHONY: package
package:
	scripts/install-packages --release
	$(MAKE) build PRESET=package
	tests/install/package_test.sh build-package --lint

# The wheel for Python, in build-wheel/.
.PHONY: wheel
wheel: install-packages
	scripts/make-wheel build-wheel

# Whether two folders give the same packages.
.PHONY: reproducible
reproducible:
	scripts/install-packages --release
	JOBS=$(JOBS) tests/install/reproducible_test.sh .

format format-check:
	scripts/install-packages --checks
	scripts/format clang-format $(if $(filter format,$@),-i,--dry-run --Werror)
	black --quiet $(if $(filter format,$@),,--check) python examples/ports

benchmarks:
	scripts/install-packages --benchmarks
	cmake --preset release -DTARVA_BUILD_BENCHMARKS=ON
	cmake --build --preset release --parallel $(JOBS) --target tarva_benchmarks
	benchmarks/run.py build

# Each target of the fuzzers for a minute, or for as many seconds as SECONDS_EACH says.
.PHONY: fuzz
SECONDS_EACH ?= 60
fuzz:
	scripts/install-packages --fuzz
	cmake --preset fuzz -DTARVA_FUZZ_SECONDS=$(SECONDS_EACH)
	cmake --build --preset fuzz --parallel $(JOBS)
	ctest --preset fuzz --parallel $(JOBS)

clean:
	rm -rf build build-dev build-asan build-tsan build-clang build-coverage build-tidy build-fuzz build-package build-wheel
