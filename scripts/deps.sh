#!/usr/bin/env bash
# Installs every Debian 12 package Tallowbrook needs to build, run and test.
# Only missing packages are installed; a machine that has them all is left alone.
set -euo pipefail

PACKAGES=(
  # toolchain
  build-essential cmake ninja-build pkg-config ccache git clang-format
  # the package's PNG icons are drawn from the SVG at build time
  librsvg2-bin
  # Qt 6: core, widgets, network, D-Bus, concurrent, test (qt6-base-dev), Quick/QML, Multimedia
  qt6-base-dev qt6-base-dev-tools qt6-declarative-dev qt6-declarative-dev-tools
  qt6-multimedia-dev qt6-image-formats-plugins qt6-qpa-plugins
  qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-controls
  qml6-module-qtquick-layouts qml6-module-qtquick-templates qml6-module-qtqml-workerscript
  qml6-module-qtmultimedia
  # OpenGL for Qt Quick (Mesa; the player falls back to software drawing without a GPU)
  libgl1-mesa-dri libglx-mesa0 libegl-mesa0
  # clip and audio playback behind Qt Multimedia
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
  # FFmpeg (duration, poster frames, movie export with libx264 / libx265)
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev
  libx264-dev libx265-dev
  # picture formats and metadata
  libheif-dev libjxl-dev libexiv2-dev
  # idle time fallback
  libx11-dev libxss-dev
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth x11-apps x11-utils xdotool imagemagick ffmpeg fonts-dejavu-core
  dbus-daemon dbus-session-bus-common
  # gdbus, the media-player test's remote
  libglib2.0-bin
  # Wayland: Qt's platform plugin, and a headless compositor and the accessibility tree for the
  # end-to-end test that runs there (ss and pgrep look for X connections)
  qt6-wayland weston at-spi2-core python3-gi gir1.2-atspi-2.0 iproute2 procps
  # transicc and jpgicc: the independent colour converter the colour tests and bench compare with
  liblcms2-utils
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "deps: all ${#PACKAGES[@]} packages present"
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
echo "deps: installing ${#missing[@]} packages: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
echo "deps: done"
