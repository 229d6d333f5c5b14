# shellcheck shell=bash disable=SC2154 # `run` gives variables
# The static checks of `./run lint`: clang-tidy, cppcheck and shellcheck. `run` includes this file.

most_includers=3 # sources that clang-tidy checks for a header, besides the header's own
# Sources that clang-tidy checks on main itself, where all commits have landed. .ci/run runs there, and has three minutes
# for the lint.
most_on_main=12

# Prints the files that differ from the last commit, new ones included.
uncommitted_files() {
    git diff --name-only HEAD
    git ls-files --others --exclude-standard
}

# Prints the commit where the branch left main; nothing on main itself.
branch_point() {
    local main base
    for main in origin/main main; do
        if base=$(git merge-base HEAD "$main" 2>/dev/null); then
            [ "$base" = "$(git rev-parse HEAD)" ] || echo "$base"
            return
        fi
    done
}

# includers_of HEADER SUFFIX: prints the files with the suffix that include a header of this name.
includers_of() {
    git grep -lE "^#include [\"<]([^\">]*/)?$(basename "$1")[\">]" -- "*.$2" || true
}

# sources_of FILE: prints the sources to check when the file has changed: a source itself; of a header its own one and
# some that include it. If only headers include it, it prints the sources of the first of them.
sources_of() {
    local own sources
    own=$(basename "${1%.*}").cpp
    case $1 in
    *.cpp) echo "$1" ;;
    *.h | *.inc)
        sources=$(includers_of "$1" cpp)
        if [ -z "$sources" ]; then
            sources=$(includers_of "$(includers_of "$1" h | sed -n 1p)" cpp)
        fi
        grep "/$own$" <<<"$sources" || true
        grep -v "/$own$" <<<"$sources" | sed "${most_includers}q" || true
        ;;
    esac
}

# Prints the sources to check for the files in standard input, each once.
sources_of_files() {
    local file
    while IFS= read -r file; do
        [ ! -f "$file" ] || sources_of "$file"
    done | built_sources | awk '!seen[$0]++'
}

# Prints the sources that clang-tidy checks.
changed_sources() {
    local base
    base=$(branch_point)
    if [ -n "$base" ]; then
        { uncommitted_files && git diff --name-only "$base" HEAD; } | sources_of_files
    else
        {
            uncommitted_files | sources_of_files
            git log --format= --name-only --max-count=20 | sources_of_files | awk "NR <= $most_on_main"
        } | awk '!seen[$0]++'
    fi
}

# Passes on those that the build knows.
built_sources() {
    grep -Fxf <(sed -n "s|^ *\"file\": \"$root/\(.*\)\",\{0,1\}$|\1|p" "$root/build/clang/compile_commands.json") || true
}

# Prints the files that the build makes of headers.
precompiled_headers() {
    ninja -C "$root/build/clang" -t targets all | sed -n 's/\.pch: .*/.pch/p'
}

scripts() {
    echo run
    echo .ci/run
    git ls-files '*.sh'
}

# Prints clang-tidy's complaints, and a line for each file without any.
tidy() {
    xargs -P "$(nproc)" -I {} sh -c 'clang-tidy -p build/clang --quiet {} 2>/dev/null && echo "checked {}"' <<<"$1"
}

check_whole_program() {
    mkdir -p build/cppcheck # keeps what is known of unchanged files
    cppcheck --project=build/clang/compile_commands.json --cppcheck-build-dir=build/cppcheck -j "$(nproc)" --quiet \
        --enable=warning,performance,portability --library=googletest --suppressions-list=.cppcheck-suppressions \
        --template=gcc --error-exitcode=1
}

check_scripts() {
    scripts | xargs shellcheck --external-sources
}

# complaints_of TOOL WHAT FAR COMMAND...: runs the command, and prints its output if it fails.
complaints_of() {
    local tool=$1 what=$2 far=$3 log=$root/build/lint.log
    shift 3
    : >"$log"
    watched "$what" "$far" "$log" "$@" && return
    sed '/^checked /d' "$log"
    complaining+=("$tool")
}

lint() {
    local all=false sources complaining=() headers
    case $* in
    "") ;;
    --all) all=true ;;
    *) misuse "lint takes --all" ;;
    esac
    need_for clang "${test_packages[@]}" "${lint_packages[@]}"
    build clang ON dtv_test_headers
    # clang-tidy reads the precompiled headers with each source.
    mapfile -t headers < <(precompiled_headers)
    build clang ON "${headers[@]}"
    cd "$root" || exit
    complaints_of shellcheck "checking $(scripts | wc -l) scripts" far_unknown check_scripts
    complaints_of cppcheck "checking the whole program" far_unknown check_whole_program
    if [ "$all" = true ]; then sources=$(git ls-files '*.cpp' | built_sources); else sources=$(changed_sources); fi
    if [ -n "$sources" ]; then
        complaints_of clang-tidy "checking $(wc -l <<<"$sources") sources" far_checked tidy "$sources"
    fi
    [ ${#complaining[@]} -eq 0 ] || fail "these complain: ${complaining[*]}"
    echo "run: nothing to complain of"
}
