# shellcheck shell=bash disable=SC2034,SC2154 # `run` gives and uses variables
# The Debian packages that the project needs, and their installation. `run` includes this file.

build_packages=(
    cmake            # configures
    ninja-build      # builds
    g++              # compiles
    libboost-dev     # shared pointers, locks, text conversion, interprocess queue (headers only)
    uuid-dev         # session names
    libbitstream-dev # fields of PSI and SI tables
    libedit-dev      # line editing at dvbshell's prompt
    zlib1g-dev       # compressed transport streams and modules
    libdvbv5-dev     # DVB adapters
    libmicrohttpd-dev # the service's HTTP server
    nlohmann-json3-dev # JSON of the tools
)
pack_packages=(
    dpkg-dev # finds the packages of the libraries that a program needs
    file     # tells programs from other files
)
test_packages=(
    libgtest-dev # test framework
    libgmock-dev # matchers
    mold         # links the test programs
    groff-base   # checks of the manual pages
    tshark       # reads recordings of the bus with the generated dissector
    tstools      # independent analysis of the generated broadcast
    pkgconf      # the installed library as builds without CMake find it
    libvalijson-dev # validates JSON against its schema
    python3       # long runs and their judgement
    git           # which sources changed, in a test of the lint
    abigail-tools # description and comparison of binary interfaces
    "${pack_packages[@]}" # a test makes the Debian package
)
browser_packages=(
    libwpewebkit-1.1-dev       # the engine
    libwpebackend-fdo-1.0-dev  # drawing without a display
    libgl1-mesa-dri            # drawing without a GPU
    libpng-dev                 # screenshots
    fonts-dejavu-core          # texts of pages
    gstreamer1.0-plugins-base  # the engine's media
    gstreamer1.0-plugins-good  # and their containers
    gstreamer1.0-plugins-bad   # the broadcast's transport stream
    gstreamer1.0-libav         # its video and audio
    gstreamer1.0-gl            # pictures of videos in pages
    ca-certificates            # pages by HTTPS
    pkgconf                    # finds them
)
# The tests with the web engine.
browser_test_packages=(
    "${browser_packages[@]}"
    python3         # serves the pages of the tests
    procps          # kills web processes
    ffmpeg          # makes a broadcast with a picture
    chromium        # looks at the page for people, as a desktop's browser
    chromium-driver # and uses it
)
bench_packages=(
    libbenchmark-dev # the framework of the measurements
    libsystemd-dev   # sd-bus, measured beside the messages
    libdvbpsi-dev    # measured beside the assembly of sections
    libavformat-dev  # measured beside the reading of broadcasts
    pkgconf          # finds them
    python3          # the table
    valgrind         # counts instructions
)
clang_packages=(clang "${bench_packages[@]}") # this preset builds the measurements too
coverage_packages=(
    clang           # counts lines and branches
    libclang-rt-dev # its counters
    llvm            # llvm-profdata and llvm-cov, which read them
    python3         # the table
)
tv_arm_packages=(
    g++-arm-linux-gnueabihf # cross compiler
    qemu-user               # runs what it builds
    googletest              # the test framework's sources
)
lint_packages=(
    git          # which sources changed
    clang        # what clang-tidy reads the sources as
    clang-format # layout
    clang-tidy   # static checks of the sources
    cppcheck     # other static checks, over the whole program
    shellcheck   # static checks of the scripts
)
# All that the commands of the README's beginning need.
first_packages=("${build_packages[@]}" "${test_packages[@]}")

# missing_of PACKAGE...: prints those of the named packages that are not installed, in one line.
missing_of() {
    comm -23 <(printf '%s\n' "$@" | sort -u) \
        <(dpkg-query -W -f='${db:Status-Abbrev}${binary:Package}\n' "$@" 2>/dev/null | sed -n 's/^ii *//p' |
            sed 's/:.*//' | sort -u) | paste -s -d ' '
}

# cannot_install PACKAGE...: ends with the command that installs the missing packages. It includes those of the README's
# other commands, so that a user needs it only once.
cannot_install() {
    local how="run as root" sudo=""
    ! command -v sudo >/dev/null || { how="run" sudo="sudo "; }
    fail "packages are missing and this user cannot install them; please $how:
  ${sudo}apt-get update && ${sudo}apt-get install -y --no-install-recommends $(missing_of "$@" "${first_packages[@]}")"
}

# size_of COMMAND...: prints what apt-get's command would download and install, if it says so.
size_of() {
    "$@" 2>/dev/null </dev/null | awk '/^Need to get / { sub(/ of archives\.$/, ""); got = substr($0, 13) }
        / newly installed/ { count = $3 }
        /^After this operation/ { printf "run: %d packages, %s to download, %s %s on disk\n", count, got, $4, $5 }' || true
}

# need PACKAGE...: installs those that are missing.
need() {
    local missing log=$root/build/apt.log as_root=()
    missing=$(missing_of "$@")
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        sudo -n true 2>/dev/null || cannot_install "$@"
        as_root=(sudo -n)
    fi
    mkdir -p "$root/build"
    : >"$log"
    # shellcheck disable=SC2086 # one word a package
    set -- $missing
    echo "run: missing packages: $*"
    watched "updating the package lists" far_unknown "$log" "${as_root[@]}" env LC_ALL=C apt-get -q update ||
        fail_with "$log" "apt-get update failed"
    size_of "${as_root[@]}" env LC_ALL=C apt-get -q install --assume-no --no-install-recommends "$@"
    watched "installing packages" far_apt "$log" "${as_root[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive \
        apt-get -q install -y --no-install-recommends "$@" || fail_with "$log" "apt-get could not install $*"
}

# need_for PRESET PACKAGE...: installs the packages that building with the preset needs, and the named ones.
need_for() {
    local preset=$1
    shift
    case " $presets " in
    *" $preset "*) ;;
    *) misuse "unknown preset $preset" ;;
    esac
    case $preset in
    clang) set -- "$@" "${clang_packages[@]}" ;;
    coverage) set -- "$@" "${coverage_packages[@]}" ;;
    tv-arm) set -- "$@" "${tv_arm_packages[@]}" ;;
    esac
    need "${build_packages[@]}" "$@"
}
