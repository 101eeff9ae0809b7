# Debian packages the console, the reference server and the tests need.
# Sourced by scripts/test and scripts/demo.
PAQUETES=(
    build-essential cmake pkg-config clang-format
    qtbase5-dev qtbase5-dev-tools
    libcpp-httplib-dev libsqlite3-dev libsodium-dev
    python-is-python3 python3
    xvfb xauth xdotool imagemagick fonts-freefont-ttf librsvg2-bin
    qttranslations5-l10n locales libqt5charts5-dev libssl-dev openssl
    dpkg-dev fakeroot lintian file
    poppler-utils zlib1g-dev adduser
)

instalar_faltantes() {
    local faltan=()
    for p in "${PAQUETES[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || faltan+=("$p")
    done
    [ ${#faltan[@]} -eq 0 ] && return 0
    echo "Instalando: ${faltan[*]}"
    local sudo=()
    [ "$(id -u)" -ne 0 ] && sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${faltan[@]}"
}

compilar() {
    local build="$1"
    cmake -S "$RAIZ" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build "$build" -j "$(nproc)"
}
