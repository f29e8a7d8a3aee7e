# Sourced by run, check and packaging: which Debian packages each needs, and how missing ones are installed.

BUILD_PACKAGES=(
    g++ cmake ninja-build pkg-config ccache
    qtbase5-dev qttools5-dev qttools5-dev-tools libqt5svg5
    libgrpc++-dev protobuf-compiler-grpc protobuf-compiler libprotobuf-dev libssl-dev
    libavahi-core-dev libavahi-common-dev
    libsqlite3-dev libxxhash-dev libcli11-dev libspdlog-dev nlohmann-json3-dev
    libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libswscale-dev libseccomp-dev
    libsdl2-dev libegl-dev libgles-dev libegl-mesa0 libgl1-mesa-dri libasound2-dev
)
DEMO_PACKAGES=(ffmpeg fonts-dejavu-core)
DISPLAY_PACKAGES=(xvfb xauth openbox xdotool imagemagick)
TEST_PACKAGES=(libgtest-dev libgmock-dev libbenchmark-dev libx11-dev)
QT6_PACKAGES=(qt6-base-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools libqt6svg6)
FUZZ_PACKAGES=(clang libclang-rt-14-dev)
LINT_PACKAGES=(clang-format-14 clang-tidy-14 python3-yaml doxygen)
PACKAGING_PACKAGES=(debhelper dpkg-dev lintian appstream desktop-file-utils abigail-tools mmdebstrap iproute2 procps)

# install_packages NAME...: installs what is missing, as root, through sudo, or says what is missing.
install_packages() {
    local missing=() name
    for name in "$@"; do
        dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null | grep -qx installed || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            cannot_install "${missing[@]}"
            return 1
        elif sudo -n true 2>/dev/null; then
            as_root=(sudo -n)
        elif [ -t 0 ]; then
            as_root=(sudo)
        else
            cannot_install "${missing[@]}"
            return 1
        fi
    fi
    echo "Installing: ${missing[*]}"
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=120)
    "${apt[@]}" update -q && "${apt[@]}" install -q -y --no-install-recommends "${missing[@]}" || {
        echo "Could not install: ${missing[*]}" >&2
        return 1
    }
}

cannot_install() {
    echo "These packages are missing, and installing them needs root or sudo:" >&2
    echo "    apt-get install --no-install-recommends $*" >&2
}
