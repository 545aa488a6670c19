# Entry points of the project. Every target builds with CMake in its own
# folder under build/.
#   make test    native build and its tests
#   make check   every configuration this machine can build (tools/check.sh)
#   make demo    builds and runs the demonstration program
#   make bench   builds and runs the benchmarks
#   make install installs library, header, pkg-config file and CMake package
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PREFIX ?= /usr/local
BUILD := build/native

.PHONY: all test check demo bench install clean native

all: native

native:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD) -j $(JOBS)

test: native
	cd $(BUILD) && ctest --output-on-failure

check:
	bash tools/check.sh

demo: native
	$(BUILD)/rmg_demo

bench: native
	$(BUILD)/rmg_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true

install:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=$(PREFIX)
	cmake --build $(BUILD) -j $(JOBS)
	cmake --install $(BUILD)

clean:
	rm -rf build
