# SPDX-License-Identifier: MIT
# From CHANGELOG.md: the releases of the metadata (TARVO_RELEASES) and the changelog of the Debian packages
# (TARVO_DEBIAN_CHANGELOG). The dates are midnight UTC.
set(TARVO_RELEASES "")
set(TARVO_DEBIAN_CHANGELOG "")
set(signature "")
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md lines ENCODING UTF-8 REGEX "^(## .*[0-9]|- |  )")
foreach(line IN LISTS lines)
    if(line MATCHES "^## .([0-9.]+). - ([0-9-]+)$")
        set(version ${CMAKE_MATCH_1})
        set(date ${CMAKE_MATCH_2})
        string(APPEND TARVO_RELEASES "    <release version=\"${version}\" date=\"${date}\"/>\n")
        string(APPEND TARVO_DEBIAN_CHANGELOG
            "${signature}tarvo-firmware-updater (${version}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; "
            "urgency=medium\n\n")
        execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C date -u -R -d ${date} OUTPUT_VARIABLE date
            OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        set(signature "\n -- ${TARVO_MAINTAINER}  ${date}\n\n")
    elseif(signature)
        string(REGEX REPLACE "^- " "* " line "${line}")
        string(APPEND TARVO_DEBIAN_CHANGELOG "  ${line}\n")
    endif()
endforeach()
string(APPEND TARVO_DEBIAN_CHANGELOG "${signature}")
string(REGEX REPLACE "\n$" "" TARVO_RELEASES "${TARVO_RELEASES}")
