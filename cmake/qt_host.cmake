# SPDX-License-Identifier: MIT
# For a toolchain: Qt's own build tools are this machine's.
set(QT_HOST_PATH /usr)
execute_process(COMMAND c++ -print-multiarch OUTPUT_VARIABLE build_machine
                OUTPUT_STRIP_TRAILING_WHITESPACE)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${build_machine}/cmake)
