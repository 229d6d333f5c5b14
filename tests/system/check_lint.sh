#!/bin/bash
# Checks which sources `run lint` gives to clang-tidy, and that it fails when one of its tools complains. The tools are
# scripts here, and the project is a small repository.
#   check_lint.sh PROJECT
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
project="$folder/project"
mkdir -p "$project/tools" "$project/.ci" "$project/src" "$project/build" "$folder/bin"
cp "$1/run" "$project/run"
cp "$1/.ci/run" "$project/.ci/run"
cp -r "$1/tools/run" "$project/tools/run"
export PATH="$folder/bin:$PATH" FOLDER="$folder" GIT_CONFIG_GLOBAL=/dev/null
broken=0

# Pretends that all packages are installed.
cat >"$folder/bin/dpkg-query" <<'END'
#!/bin/sh
shift 2
printf 'ii  %s\n' "$@"
END
# Configures: the build knows all sources but those in elsewhere/.
cat >"$folder/bin/cmake" <<'END'
#!/bin/sh
cd "$FOLDER/project" && mkdir -p build/clang && touch build/clang/build.ninja
echo DTV_BUILD_TESTS:BOOL=ON >build/clang/CMakeCache.txt
find "$PWD/src" -name '*.cpp' | sed 's/.*/  "file": "&",/' >build/clang/compile_commands.json
END
cp "$folder/bin/cmake" "$folder/bin/ninja"
# The tools complain of files with the word "wrong".
cat >"$folder/bin/clang-tidy" <<'END'
#!/bin/sh
for file; do :; done
echo "$file" >>"$FOLDER/checked"
! grep -n wrong "$file"
END
cat >"$folder/bin/cppcheck" <<'END'
#!/bin/sh
! grep -rn wrong_everywhere src
END
cat >"$folder/bin/shellcheck" <<'END'
#!/bin/sh
shift
! grep -n wrong "$@"
END
chmod +x "$folder/bin"/*

commit() {
    git add -A
    git -c user.name=tester -c user.email=tester@localhost commit -q -m "a change"
}

# expect WHAT CODE LAST_LINE FILES [--all]: runs the lint, checks exit code, last line and the files that clang-tidy saw.
expect() {
    local what=$1 code=$2 line=$3 files=$4 given=0
    shift 4
    : >"$folder/checked"
    ./run lint "$@" >"$folder/out" 2>&1 </dev/null || given=$?
    if [ "$given" -ne "$code" ] || [ "$(tail -n 1 "$folder/out")" != "$line" ] ||
        [ "$(sort "$folder/checked" | paste -s -d ' ')" != "$files" ]; then
        echo "$what: exit code $given instead of $code, or another last line than \"$line\", or other files than $files:"
        cat "$folder/out" "$folder/checked"
        broken=1
    fi
}

cd "$project"
git init -q -b main
echo build >.gitignore
for name in a b c d e; do
    echo '#include "shared/a.h"' >"src/$name.cpp"
done
echo 'int z;' >src/z.cpp
echo '#include "inner.h"' >src/a.h
echo 'int inner();' >src/inner.h
mkdir elsewhere
echo 'int unknown;' >elsewhere/unknown.cpp
commit
nothing="run: nothing to complain of"
expect "main itself" 0 "$nothing" "src/a.cpp src/b.cpp src/c.cpp src/d.cpp src/e.cpp src/z.cpp"

git checkout -q -b change
expect "a branch without a change" 0 "$nothing" "src/a.cpp src/b.cpp src/c.cpp src/d.cpp src/e.cpp src/z.cpp"
echo 'int more;' >>src/z.cpp
echo 'int more;' >>elsewhere/unknown.cpp
commit
expect "a source" 0 "$nothing" "src/z.cpp"
echo 'int b;' >src/new.cpp
expect "a new source" 0 "$nothing" "src/new.cpp src/z.cpp"
rm src/new.cpp
echo 'int b;' >>src/a.h
expect "a header" 0 "$nothing" "src/a.cpp src/b.cpp src/c.cpp src/d.cpp src/z.cpp"
git checkout -q src/a.h
echo 'int b;' >>src/inner.h
expect "a header that a header includes" 0 "$nothing" "src/a.cpp src/b.cpp src/c.cpp src/z.cpp"
git checkout -q src/inner.h
expect "all" 0 "$nothing" "src/a.cpp src/b.cpp src/c.cpp src/d.cpp src/e.cpp src/z.cpp" --all

echo 'int wrong;' >>src/e.cpp
expect "a wrong source" 1 "run: these complain: clang-tidy" "src/e.cpp src/z.cpp"
grep -q '^2:int wrong;' "$folder/out" || broken=1
echo 'int wrong_everywhere;' >>src/z.cpp
echo '# wrong' >>run
expect "all tools complain" 1 "run: these complain: shellcheck cppcheck clang-tidy" "src/e.cpp src/z.cpp"

git checkout -q -f main
for number in {10..30}; do
    echo 'int n;' >"src/n$number.cpp"
done
commit
expect "many sources on main" 0 "$nothing" "$(echo src/n{10..21}.cpp)"
exit $broken
