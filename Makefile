# Quick start: `make run` and `make test`. Both install what is missing (as root), configure and build.
BUILD ?= build
JOBS ?= 2
CMAKE_FLAGS ?=

DEBS := cmake gcc g++ make pkg-config qt6-base-dev qt6-base-dev-tools qt6-5compat-dev libgl-dev \
        libbenchmark-dev qt6-qpa-plugins xvfb xauth khard dbus-daemon libxcb-screensaver0-dev \
        libwayland-dev wayland-protocols xdotool libreoffice-calc-nogui poppler-utils \
        librsvg2-bin cmark desktop-file-utils appstream shared-mime-info xdg-utils libfile-mimeinfo-perl \
        dpkg-dev openbox tint2 imagemagick inotify-tools python3 python3-dbus python3-gi python3-xlib valgrind

.PHONY: all deps configure build run test test-sanitize fuzz crashtest abuse soak bench format clean install deb debcheck mutants

all: build

deps:
	@missing=""; for p in $(DEBS); do \
	  dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q '^install ok installed' || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  if [ "$$(id -u)" = 0 ]; then \
	    echo "Installing:$$missing"; \
	    apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $$missing; \
	  else \
	    echo "Missing packages. Run:"; echo "  sudo apt-get install -y$$missing"; exit 1; \
	  fi; \
	fi

configure: deps
	@[ -f $(BUILD)/CMakeCache.txt ] || cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j$(JOBS)

run: build
	$(BUILD)/src/veltrick

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j$(JOBS)

# Every test and the journeys again, the program and its windows built with AddressSanitizer and
# UndefinedBehaviorSanitizer in a folder of their own; any report, a leak at the program's end included,
# fails the test that made it. SANITIZE_WIDGETS=OFF leaves the windows out, for a quicker run.
SANITIZE_BUILD ?= build-asan
SANITIZE_WIDGETS ?= ON
test-sanitize: deps
	@[ -f $(SANITIZE_BUILD)/CMakeCache.txt ] || cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug \
	  -DVELTRICK_SANITIZE=ON -DVELTRICK_WIDGETS=$(SANITIZE_WIDGETS) -DVELTRICK_BENCH=OFF
	cmake --build $(SANITIZE_BUILD) -j$(JOBS)
	cd $(SANITIZE_BUILD) && QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 ctest --output-on-failure -j$(JOBS) -E '^package/'

# Every libFuzzer target for FUZZ_SECONDS each (clang, ASan and UBSan), from the seeds in fuzz/corpus;
# what they learn is kept in $(FUZZ_BUILD)/corpus. A crash, a hang of 10 s or an allocation over
# 100 MiB stops the run and leaves the input that did it in the current folder.
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 600
FUZZ_TARGETS := timesheet prefs operations presets clients vcard contacts_folder netlink
fuzz:
	@$(MAKE) --no-print-directory deps DEBS="$(DEBS) clang libclang-rt-14-dev"
	@[ -f $(FUZZ_BUILD)/CMakeCache.txt ] || CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) \
	  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELTRICK_FUZZ=ON -DVELTRICK_WIDGETS=OFF -DVELTRICK_BENCH=OFF
	cmake --build $(FUZZ_BUILD) -j$(JOBS) --target $(addprefix fuzz_,$(FUZZ_TARGETS))
	@for t in $(FUZZ_TARGETS); do mkdir -p $(FUZZ_BUILD)/corpus/$$t; echo "== fuzz_$$t"; \
	  $(FUZZ_BUILD)/fuzz/fuzz_$$t -max_total_time=$(FUZZ_SECONDS) -timeout=10 -malloc_limit_mb=100 \
	    -rss_limit_mb=2048 -print_final_stats=1 $(FUZZ_BUILD)/corpus/$$t fuzz/corpus/$$t || exit 1; done

# The program under Xvfb with its clock sped up, killed CRASH_KILLS times at random instants and in the
# middle of saves, then restarted; every file must open and no restart may lose more than the minute
# in progress. Runs veltrick-testclock, the program whose clock the test sets.
CRASH_KILLS ?= 500
crashtest:
	@$(MAKE) --no-print-directory deps
	@[ -f $(BUILD)/CMakeCache.txt ] || cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)
	cmake --build $(BUILD) -j$(JOBS) --target veltrick-testclock veltrick-cli
	python3 tests/stress/crashtest.py $(BUILD) $(CRASH_KILLS)

# Net Link of the real program under abuse on 127.0.0.1: floods, silent clients, a 64 MiB request, a
# dribbled one, clients that leave mid-page; the page must still come after each.
abuse: build
	python3 tests/stress/netlink_abuse.py $(BUILD)

# The randomized command test with random seeds for SOAK_SECONDS (30 minutes); a failure prints its seed,
# which VELTRICK_SEED=<seed> build/tests/test_randomcommands fixedSeeds replays.
SOAK_SECONDS ?= 1800
soak: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen VELTRICK_SOAK_SECONDS=$(SOAK_SECONDS) \
	  QTEST_FUNCTION_TIMEOUT=$$(( ($(SOAK_SECONDS) + 600) * 1000 )) ./tests/test_randomcommands soak

# The planted faults of mutants/list.txt, one at a time, in a copy of the tree taken from MUTANTS_COMMIT
# (build-mutants/): each is killed when a test fails, survives when all pass. Prints the score and the
# survivors; about 1 to 2 minutes a mutant.
MUTANTS_COMMIT ?= HEAD
mutants: deps
	python3 mutants/run.py --commit $(MUTANTS_COMMIT)

bench: build
	@for b in $(BUILD)/bench/bench_*; do [ -x "$$b" ] && "$$b"; done
	xvfb-run -a -s "-screen 0 1280x800x24 -noreset" dbus-run-session /usr/bin/python3 bench/startup.py $(BUILD)

# Installs into PREFIX (default /usr/local).
PREFIX ?= /usr/local
install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

# The Debian package veltrick_<version>_<arch>.deb, built in a folder of its own without tests.
DEB_BUILD ?= build-deb
deb: deps
	@[ -f $(DEB_BUILD)/CMakeCache.txt ] || cmake -S . -B $(DEB_BUILD) -DCMAKE_BUILD_TYPE=Release \
	  -DVELTRICK_TESTS=OFF -DVELTRICK_BENCH=OFF
	cmake --build $(DEB_BUILD) -j$(JOBS)
	cd $(DEB_BUILD) && cpack -G DEB

# Installs the package with apt on this machine, or in the Debian root folder DEBROOT (a chroot made
# by debootstrap), starts it, removes it and checks that nothing is left behind.
DEBROOT ?=
debcheck: deb
	bash tests/package/check_deb.sh $(DEB_BUILD) $(DEBROOT)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD)
