# Functions that the scripts of this folder share. It is sourced, not run.

say() {
    printf '\n== %s\n' "$*"
}

# Installs missing Debian packages as root. Without the rights of root, prints their names.
need_packages() {
    local missing=()
    local package
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    ((${#missing[@]} == 0)) && return
    if ((EUID != 0)); then
        say "These packages are missing: ${missing[*]}"
        echo "Install them with: sudo apt-get install ${missing[*]}" >&2
        exit 1
    fi
    say "Installing ${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# Uses a compiler cache if there is one.
launcher_options() {
    if command -v ccache >/dev/null; then
        echo "-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache"
    fi
}

jobs_count() {
    nproc
}
