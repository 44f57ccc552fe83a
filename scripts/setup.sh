# Sourced by the scripts: installs what is missing and builds a preset.

# What a virtual desktop needs on which the program is driven.
desktop_packages=(xvfb openbox dbus at-spi2-core python3-dbus python3-gi python3-pil)

say() {
    printf '\n==> %s\n' "$*"
}

fail() {
    printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# The scripts' own temporary directory, which every program that they start uses: gone when they end, also by Ctrl+C.
use_temporary_directory() {
    TMPDIR=$(mktemp -d "${TMPDIR:-/tmp}/tarvo.XXXXXX")
    chmod 755 "$TMPDIR" # some tests run a program as another user
    export TMPDIR
    trap end_quietly INT TERM
    trap 'rm -rf "$TMPDIR"' EXIT
}

# Ends what was started in the background, so that nothing is written behind the removal.
end_quietly() {
    trap '' INT TERM
    kill $(jobs -p) 2>/dev/null || true
    wait || true
    exit 130
}

missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f '${Status}\n' "$package" 2>/dev/null | grep -q 'ok installed' || echo "$package"
    done
}

# Shows the progress that apt reports on its status descriptor, on one line that changes.
show_progress() {
    local kind package percent what
    while IFS=: read -r kind package percent what; do
        [ -t 1 ] && printf '\r\033[K    %3.0f %%  %s' "$percent" "$what"
    done
    [ -t 1 ] && printf '\r\033[K'
    return 0
}

# Installs those of the named Debian packages that are missing. What apt prints goes to build/apt.log.
install_packages() {
    local missing as_root=() reason
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "missing packages and no sudo to install them; as root, run: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    mkdir -p build
    # Whether it worked is seen by what is installed: apt's exit status is 0 also where it reached no server.
    {
        "${as_root[@]}" apt-get update -q
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
            -o APT::Status-Fd=3 "${missing[@]}"
    } 3> >(show_progress) >build/apt.log 2>&1 </dev/null || true
    wait $! || true # for the progress to be cleared away
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -eq 0 ] && return
    reason=$(sed -nE '/^[EW]: */{s///p;q}' build/apt.log)
    fail "cannot install ${missing[*]}: ${reason:-apt does not say why}; see build/apt.log"
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
        install_packages g++ cmake ninja-build qt6-base-dev libsqlite3-dev libsqlitecpp-dev zlib1g-dev libcli11-dev \
            nlohmann-json3-dev "$@"
    else
        fail "neither apt-get nor Homebrew here; install a C++17 compiler, CMake 3.25, Ninja and Qt 6.4 or later" \
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
