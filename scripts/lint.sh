# Sourced by ./test: the checks of the code, which compile nothing. Each check of a file is done by
# scripts/lint-file, which remembers what has passed.

lint_folder=$root/build/lint

# The files that Qt generates and others include. Ninja would first build every library that a target
# links, so CMake's tool is run as Ninja would.
generate_moc() {
    ninja -C "$lint_folder" -t targets all |
        sed -nE 's|^(.*/CMakeFiles/[^/]+_autogen): phony$|\1.dir/AutogenInfo.json|p' |
        (cd "$lint_folder" && xargs -P "$(nproc)" -I '{}' \
            cmake -E cmake_autogen '{}' Debug) >"$lint_folder/autogen.log" 2>&1 || {
        cat "$lint_folder/autogen.log" >&2
        return 1
    }
}

# Configures a build for clang, of which nothing else is built.
prepare_lint() {
    configure lint && generate_moc || return 1
    mkdir -p "$lint_folder"/{passed,records}
    find "$lint_folder/passed" "$lint_folder/records" -type f -mtime +30 -delete
    jq -r '.[] | "\(.file)\t\(.command)"' "$lint_folder/compile_commands.json" >"$lint_folder/commands"
    {
        clang-tidy --version
        cat "$root/.clang-tidy"
        grep -rh NOLINT "$root/src" "$root/tests" "$root/benchmarks"
    } >"$lint_folder/rules"
}

check_format() {
    find "$root/src" "$root/tests" "$root/benchmarks" "$root/fuzz" \
        \( -name '*.h' -o -name '*.cpp' \) -print0 |
        xargs -0 clang-format --dry-run --Werror
}

# The commit since which files count as changed: the given one, or the one before the last twenty.
# Fails where there is no such commit, as in a copy without its history.
lint_base() {
    git -C "$root" rev-parse --quiet --verify "${lint_since:-HEAD~20}^{commit}" 2>/dev/null
}

# The sources and headers to look at, one a line and relative to the top folder.
files_to_lint() {
    local base
    if [[ $lint_what == changed ]] && base=$(lint_base); then
        {
            git -C "$root" diff --name-only --diff-filter=d "$base"
            git -C "$root" ls-files --others --exclude-standard
        } | sort -u
    else
        (cd "$root" && find src tests benchmarks -type f)
    fi | grep -E '^(src|tests|benchmarks)/.*\.(h|cpp)$'
}

# sources_of: reads files and answers the sources whose check tells of them: of a header its own
# source, or the first one that includes it.
sources_of() {
    local file
    while read -r file; do
        if [[ $file == *.cpp ]]; then
            echo "$file"
        elif [[ -e $root/${file%.h}.cpp ]]; then
            echo "${file%.h}.cpp"
        else
            (cd "$root" && grep -rl --include='*.cpp' "#include \"\(.*/\)\?${file##*/}\"" \
                "${file%/*}" src tests benchmarks | head -n 1)
        fi
    done | sort -u
}

# Only what is built here can be looked at.
built_sources() {
    grep -xF -f <(cut -f 1 "$lint_folder/commands" | sed "s|^$root/||")
}

# with_source: reads headers and answers each with a source that includes it.
with_source() {
    local header source
    while read -r header; do
        source=$(sources_of <<<"$header" | built_sources)
        [[ -z $source ]] || echo "$header $source"
    done
}

# lint_each CHECK: does a check of all files that it reads. Fails when one fails; files that there was no
# time for are counted, and are no failure.
lint_each() {
    local check=$1 files results passed late all
    files=$(sed -E "s#(^| )#\\1$root/#g")
    results=$(LINT_END=$lint_end xargs -r -d '\n' -P "$(nproc)" -n 1 \
        "$root/scripts/lint-file" "$check" "$lint_folder" <<<"$files")
    all=$(grep -c . <<<"$files")
    passed=$(grep -cx passed <<<"$results")
    late=$(grep -cx late <<<"$results")
    note "$check: $passed of $all files passed, $((all - passed - late)) failed"
    ((late == 0)) || note "$check: NOT LOOKED AT, since the time was over: $late files"
    ((passed + late == all))
}

check_code() {
    local check=tidy
    [[ $lint_what == changed ]] || check=everything
    files_to_lint | sources_of | built_sources | lint_each "$check"
}

check_headers() {
    files_to_lint | grep '\.h$' | with_source | lint_each header
}

run_lint() {
    local failed=0 step steps=(check_format check_headers check_code)
    lint_end=${lint_minutes:+$((EPOCHSECONDS + lint_minutes * 60))}
    prepare_lint || return 1
    for step in "${steps[@]}"; do
        "$step" || ((++failed))
    done
    echo "$((${#steps[@]} - failed)) passed, $failed failed"
    ((failed == 0))
}
