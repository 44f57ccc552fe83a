# Sourced by ./run and ./test: installs what is missing and builds a preset.

say() {
    printf '\n==> %s\n' "$*"
}

fail() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Installs those of the named Debian packages that are missing.
install_packages() {
    local package missing=() as_root=()
    for package in "$@"; do
        dpkg-query -W -f '${Status}\n' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "missing packages and no sudo to install them; as root, run: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq ||
        fail "apt-get update failed (see above); check the package sources of this machine, then run this again"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null ||
        fail "apt-get could not install ${missing[*]} (see above); install them by hand, then run this again"
}

# Installs those of the named Homebrew formulae that are missing.
install_formulae() {
    local formula
    command -v brew >/dev/null || fail "Homebrew is missing; install it, then run this again"
    for formula in "$@"; do
        brew list --formula "$formula" >/dev/null 2>&1 || {
            say "Installing $formula"
            brew install --quiet "$formula" || fail "Homebrew could not install $formula (see above)"
        }
    done
}

on_macos() {
    [ "$(uname -s)" = Darwin ]
}

# What a build needs; the arguments are further packages for Debian.
install_build_tools() {
    if on_macos; then
        install_formulae cmake ninja qt sqlite sqlitecpp cli11 nlohmann-json
        CMAKE_PREFIX_PATH="$(brew --prefix qt)${CMAKE_PREFIX_PATH:+:$CMAKE_PREFIX_PATH}"
        export CMAKE_PREFIX_PATH
    elif command -v apt-get >/dev/null; then
        install_packages g++ cmake ninja-build qt6-base-dev libsqlite3-dev libsqlitecpp-dev libcli11-dev nlohmann-json3-dev "$@"
    else
        fail "neither apt-get nor Homebrew here; install a C++17 compiler, CMake 3.21, Ninja and Qt 6.4 or later" \
            "by hand, then: cmake --preset release && cmake --build --preset release"
    fi
}

configure() {
    local preset=$1
    mkdir -p build
    cmake --preset "$preset" >"build/$preset.configure.log" 2>&1 || {
        cat "build/$preset.configure.log" >&2
        fail "the configuration of $preset failed (see above)"
    }
}

# Configures and builds a preset; further arguments go to the build.
build() {
    local preset=$1
    shift
    say "Building $preset"
    configure "$preset"
    nice cmake --build --preset "$preset" "$@" || fail "the build of $preset failed (see above)"
}
