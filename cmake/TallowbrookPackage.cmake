# The Debian package (scripts/package.sh runs cpack in the build folder). Included last, after
# every install() rule.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tallowbrook)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Tallowbrook developers")
set(CPACK_PACKAGE_CONTACT "Tallowbrook maintainers <maintainers@tallowbrook.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop slideshows of photos, animated pictures and clips")
# Wrapped for the 80 columns of apt show.
set(CPACK_PACKAGE_DESCRIPTION
    "Tallowbrook fills a queue with photos, animated GIFs and clips and plays it
full-screen or in a window: one picture at a time with fades and the Ken
Burns effect, or several side by side in a grid, with background music. It
reads JPEG, PNG, GIF, WebP, TIFF, HEIC, AVIF and JPEG XL pictures and MP4,
M4V, MOV and AVI clips, saves a queue as a slideshow document that finds its
files again after they move, renders a show into an H.264 or HEVC movie, and
answers media keys while a show runs.")
set(CPACK_STRIP_FILES ON)
# <name>_<version>_<arch>.deb, the name apt and dpkg users expect.
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://tallowbrook.com/")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# The libraries the program links are found from the binary (dpkg-shlibdeps). What it loads at
# run time only, the linker cannot see:
set(runtimeDepends
    # The QML modules the player's scenes import (QtQuick, QtMultimedia; Tallowbrook.Playback
    # is registered by the program itself), and QtQml.WorkerScript, which QtQuick loads but
    # Debian's qml6-module-qtquick does not depend on.
    qml6-module-qtquick
    qml6-module-qtmultimedia
    qml6-module-qtqml-workerscript
    # Qt Multimedia plays clips and music through GStreamer (its backend plugin ships in
    # libqt6multimedia6, which the binary links): playback bins and conversion (base), MP4/MOV
    # and AVI demuxers and the sound sinks (good), the H.264/HEVC parsers (bad), and the
    # decoders for H.264, HEVC, AAC and MP3 (libav).
    gstreamer1.0-plugins-base
    gstreamer1.0-plugins-good
    gstreamer1.0-plugins-bad
    gstreamer1.0-libav
    # QImageReader plugins for WebP and TIFF; JPEG, PNG and GIF come with Qt GUI, and HEIC,
    # AVIF and JPEG XL with the plugin linked into the program.
    qt6-image-formats-plugins
    # Platform plugins: xcb ships with Qt GUI; Wayland sessions need their own.
    qt6-wayland)
list(JOIN runtimeDepends ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

include(CPack)
