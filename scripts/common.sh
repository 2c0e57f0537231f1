# Sourced by the root scripts and some beside it, which set `root` to the top folder of the checkout.

note() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

fail() {
    note "$*"
    exit 1
}

usage_error() {
    note "$* (see --help)"
    exit 2
}

# missing_packages LIST...: those Debian packages of the lists that are not installed, one a line.
missing_packages() {
    local wanted present
    wanted=$(sed 's/#.*//' "$@" | tr -s '[:space:]' '\n' | grep . | LC_ALL=C sort -u)
    # One word is one package. A name that dpkg has never heard of makes it fail, but not fall silent.
    present=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' $wanted 2>/dev/null |
        sed -n 's/^installed //p' | LC_ALL=C sort -u)
    LC_ALL=C comm -23 <(printf '%s\n' "$wanted") <(printf '%s\n' "$present")
}

# install_packages LIST...: installs what is missing in one go; does nothing when all is there.
install_packages() {
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
        fail "this is no Debian system; install the equivalents of the packages in $* by hand"
    local missing
    missing=$(missing_packages "$@" | tr '\n' ' ')
    [[ -n ${missing// /} ]] || return 0

    local -a as_root=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            fail "these Debian packages are missing, and only root can install them: $missing"
        as_root=(sudo)
    fi
    local -a apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q
        -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0)
    note "installing Debian packages: $missing"
    "${apt[@]}" update || note "the package lists could not be updated; trying with the old ones"
    "${apt[@]}" install -y --no-install-recommends $missing </dev/null ||
        fail "these Debian packages could not be installed: $missing"
}

# configure PRESET [CMAKE OPTIONS...]: what CMake says is shown only when it fails.
configure() {
    local folder=$root/build/$1 log=$root/build/$1/configure.log
    local -a options=("$@")
    options[0]=--preset=$1
    mkdir -p "$folder"
    # A checkout that was moved or copied has a cache that names its old place.
    if [[ -f $folder/CMakeCache.txt ]] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        options+=(--fresh)
    fi
    cmake -S "$root" "${options[@]}" >"$log" 2>&1 || {
        cat "$log" >&2
        note "CMake could not configure $folder"
        return 1
    }
}

# build PRESET [TARGETS...]
build() {
    local preset=$1
    shift
    cmake --build "$root/build/$preset" ${1:+--target "$@"} || {
        note "the build failed"
        return 1
    }
}
