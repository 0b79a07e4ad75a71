# Two commands do everything on a fresh Debian machine (as root):
#   make demo   install what is missing, build, summarise the bundled sample,
#               print its node tree and its materials
#   make test   install what is missing, build, run every test through ctest
#
# Variables: SANITIZE=ON builds with AddressSanitizer and UBSan (in its own
# build folder), WERROR=ON turns warnings into errors, JOBS sets parallelism.

SANITIZE ?= OFF
WERROR ?= OFF
BUILD_TYPE ?= Release
JOBS ?= $(shell nproc)
BUILD_DIR ?= build/$(if $(filter ON,$(SANITIZE)),sanitize,release)
PACKAGES := cmake ninja-build g++ libpugixml-dev libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev

.PHONY: setup configure build demo test bench fuzz format clean

setup:
	@missing=""; \
	for p in $(PACKAGES); do dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing; \
	fi

configure: setup
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	  -DOX_SANITIZE=$(SANITIZE) -DOX_WERROR=$(WERROR) $(CMAKE_ARGS)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

demo: build
	$(BUILD_DIR)/bin/oxdae info samples/scene.dae
	$(BUILD_DIR)/bin/oxdae tree samples/scene.dae
	$(BUILD_DIR)/bin/oxdae materials samples/scene.dae

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

# Benchmarks are not tests: see README.md.
bench: setup
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DOX_BUILD_BENCH=ON -DOX_BUILD_TESTS=OFF
	cmake --build build/bench -j $(JOBS)
	build/bench/bin/oxdae_load_bench $(BENCH_ARGS)
	build/bench/bin/oxdae_scene_bench $(SCENE_BENCH_ARGS)

fuzz: setup
	CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOX_BUILD_FUZZ=ON -DOX_BUILD_TESTS=OFF
	cmake --build build/fuzz -j $(JOBS)
	mkdir -p build/fuzz/corpus
	build/fuzz/bin/oxdae_fuzz -dict=fuzz/collada.dict -max_total_time=$${FUZZ_SECONDS:-60} build/fuzz/corpus fuzz/seeds

format:
	clang-format -i $$(git ls-files '*.h' '*.cpp')

clean:
	rm -rf build
