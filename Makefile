# Two commands do everything on a fresh Debian machine (as root):
#   make demo   install what is missing, build, summarise the bundled sample,
#               print its node tree and its materials
#   make test   install what is missing, build, run every test through ctest
#
# Variables: SANITIZE=ON builds with AddressSanitizer and UBSan (in its own
# build folder), TSAN=ON with ThreadSanitizer (in build/tsan), WERROR=ON turns
# warnings into errors, JOBS sets parallelism, TARGETS builds only the named
# targets (default: all), CTEST_ARGS is passed to ctest (-R PATTERN, say).
#   make fuzz          runs the document fuzzer for FUZZ_SECONDS (60)
#   make fuzz-strings  the same for the fuzzer of the module's own text parsers
# Both keep their working corpus under build/fuzz; fuzz/ is only read.

SANITIZE ?= OFF
TSAN ?= OFF
WERROR ?= OFF
BUILD_TYPE ?= Release
JOBS ?= $(shell nproc)
BUILD_DIR ?= build/$(if $(filter ON,$(TSAN)),tsan,$(if $(filter ON,$(SANITIZE)),sanitize,release))
PACKAGES := cmake ninja-build g++ libpugixml-dev libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev libfmt-dev libzip-dev pkgconf libosmesa6-dev libstb-dev zlib1g-dev
FUZZ_PACKAGES := clang libclang-rt-dev
# The Khronos glTF validator for the converter's tests (label gltf), run with
# the machine's Node.js.
GLTF_VALIDATOR := 2.0.0-dev.3.10
NODE_MODULES := build/node/node_modules

.PHONY: setup configure build demo test bench fuzz fuzz-strings fuzz-build format clean

setup:
	@missing=""; \
	for p in $(PACKAGES); do dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing; \
	fi
	@test -f $(NODE_MODULES)/gltf-validator/package.json || { \
	  command -v npm >/dev/null || { apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq nodejs npm; }; \
	  echo "installing: gltf-validator $(GLTF_VALIDATOR) (npm, into build/node)"; \
	  npm install --silent --no-audit --no-fund --prefix build/node gltf-validator@$(GLTF_VALIDATOR); \
	}

configure: setup
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	  -DOX_SANITIZE=$(SANITIZE) -DOX_TSAN=$(TSAN) -DOX_WERROR=$(WERROR) $(CMAKE_ARGS)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) $(if $(TARGETS),--target $(TARGETS))

demo: build
	$(BUILD_DIR)/bin/oxdae info samples/scene.dae
	$(BUILD_DIR)/bin/oxdae tree samples/scene.dae
	$(BUILD_DIR)/bin/oxdae materials samples/scene.dae

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# Benchmarks are not tests: see README.md.
bench: setup
	cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DOX_BUILD_BENCH=ON -DOX_BUILD_TESTS=OFF
	cmake --build build/bench -j $(JOBS)
	build/bench/bin/oxdae_load_bench $(BENCH_ARGS)
	build/bench/bin/oxdae_scene_bench $(SCENE_BENCH_ARGS)

fuzz-build: setup
	@$(MAKE) --no-print-directory setup PACKAGES="$(FUZZ_PACKAGES)"
	CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOX_BUILD_FUZZ=ON -DOX_BUILD_TESTS=OFF
	cmake --build build/fuzz -j $(JOBS) --target oxdae_fuzz oxdae_fuzz_strings

fuzz: fuzz-build
	mkdir -p build/fuzz/corpus build/fuzz/artifacts
	build/fuzz/bin/oxdae_fuzz -dict=fuzz/collada.dict -max_total_time=$${FUZZ_SECONDS:-60} \
	  -artifact_prefix=build/fuzz/artifacts/ build/fuzz/corpus fuzz/seeds

fuzz-strings: fuzz-build
	mkdir -p build/fuzz/corpus_strings build/fuzz/artifacts
	build/fuzz/bin/oxdae_fuzz_strings -dict=fuzz/strings.dict -max_total_time=$${FUZZ_SECONDS:-60} \
	  -artifact_prefix=build/fuzz/artifacts/ build/fuzz/corpus_strings fuzz/strings_seeds

format:
	clang-format -i $$(git ls-files '*.h' '*.cpp')

clean:
	rm -rf build
