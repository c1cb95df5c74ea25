# Brevano: every target installs the Debian packages it needs first.
BUILD_DIR ?= build
FUZZ_DIR ?= build-fuzz
BENCH_DIR ?= build-bench
SANITIZE_DIR ?= build-asan
TSAN_DIR ?= build-tsan
BUILD_TYPE ?= RelWithDebInfo
SECONDS ?= 60
JOBS ?= $(shell nproc)

.PHONY: all deps configure build run install test sanitize tsan bench fuzz format clean
PREFIX ?= /usr/local

all: build

deps:
	@scripts/install-deps.sh build

$(BUILD_DIR)/build.ninja:
	@scripts/install-deps.sh build
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DBREVANO_WERROR=ON

configure: $(BUILD_DIR)/build.ninja

build: configure
	@scripts/install-deps.sh build
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@scripts/install-deps.sh build run
	@scripts/run.sh $(BUILD_DIR)/src/app/brevano $(BUILD_DIR)

install: build
	cmake --install $(BUILD_DIR) --prefix $(PREFIX)

test:
	@scripts/install-deps.sh build test
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DBREVANO_WERROR=ON -DBREVANO_TESTS=ON
	cmake --build $(BUILD_DIR) -j $(JOBS)
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# Every test again, built with AddressSanitizer and UBSan.
sanitize:
	@scripts/install-deps.sh build test
	cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBREVANO_TESTS=ON \
	  -DCMAKE_CXX_FLAGS="-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined" \
	  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined"
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	cd $(SANITIZE_DIR) && ASAN_OPTIONS=detect_leaks=0 ctest --output-on-failure -j $(JOBS)

# The tests that run threads again, built with ThreadSanitizer: the listing
# worker (and the panel it feeds), the menu worker and its previews, the size
# estimate, the panel's thumbnails and the engine.
TSAN_TESTS = tst_FileListBuilder tst_MenuBuilder tst_Panel tst_Preferences tst_SettingsLists tst_Shell tst_Thumbnails tst_TidyEngine tst_Welcome
tsan:
	@scripts/install-deps.sh build test
	cmake -S . -B $(TSAN_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DBREVANO_TESTS=ON \
	  -DCMAKE_CXX_FLAGS="-fsanitize=thread -fno-omit-frame-pointer" \
	  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread"
	cmake --build $(TSAN_DIR) -j $(JOBS) --target $(TSAN_TESTS)
	# die_after_fork=0: the tests start helpers (mount, localedef) through QProcess, whose
	# child execs at once; ThreadSanitizer would otherwise refuse every later thread.
	cd $(TSAN_DIR) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 die_after_fork=0 suppressions=$(CURDIR)/tests/tsan.supp" \
	  ctest --output-on-failure -j $(JOBS) -R '^($(subst $(eval) ,|,$(TSAN_TESTS)))$$'

bench:
	@scripts/install-deps.sh build bench
	@$(MAKE) --no-print-directory build BUILD_DIR=$(BENCH_DIR) BUILD_TYPE=Release
	@bench/run.sh $(BENCH_DIR)

fuzz:
	@scripts/install-deps.sh build fuzz
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DBREVANO_FUZZ=ON -DBREVANO_TESTS=OFF
	cmake --build $(FUZZ_DIR) -j $(JOBS) --target fuzz_property_list
	@fuzz/run.sh $(FUZZ_DIR) $(SECONDS)

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf $(BUILD_DIR) $(FUZZ_DIR) $(BENCH_DIR) $(SANITIZE_DIR) $(TSAN_DIR)
