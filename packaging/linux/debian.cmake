# SPDX-License-Identifier: MIT
# The Debian packages, one a component.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL program command)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${PROJECT_HOMEPAGE_URL})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

# A description begins with the synopsis; CPack indents the rest.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME tarvo-firmware-updater)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "tarvo-firmware-cli (= ${version})")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "firmware updater for Tarvo external disk drives
Shows a page for each Tarvo drive that is attached over USB or FireWire,
with its model and its firmware, and writes new firmware and
configuration into the bridge controller of the drive.
.
This build finds the simulated drives of the package tarvo-drive-bench.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME tarvo-firmware-cli)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SOURCE tarvo-firmware-updater)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SUGGESTS "bash-completion, ansible-core | ansible")
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "firmware updater for Tarvo external disk drives, without a window
Lists the Tarvo drives that are attached over USB or FireWire and writes
new firmware and configuration into them, for computers without a
display and for scripts. An Ansible role for many computers is among the
examples.
.
This build finds the simulated drives of the package tarvo-drive-bench.")

if(TARGET drive-bench)
    list(APPEND CPACK_COMPONENTS_ALL images bench)
    # All read the format of the images and of the bench, so they are of one version: that of the images.
    set(images "tarvo-firmware-images (= ${version})")
    set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ${images})
    string(APPEND CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS ", tarvo-drive-bench (= ${version})")
    set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS ${images})
    string(APPEND CPACK_DEBIAN_COMMAND_PACKAGE_SUGGESTS ", tarvo-drive-bench (= ${version})")

    set(CPACK_DEBIAN_IMAGES_PACKAGE_NAME tarvo-firmware-images)
    set(CPACK_DEBIAN_IMAGES_PACKAGE_SOURCE tarvo-firmware-updater)
    set(CPACK_DEBIAN_IMAGES_PACKAGE_ARCHITECTURE all)
    # Up to 1.1.6 the images were in the package of the window.
    set(CPACK_DEBIAN_IMAGES_PACKAGE_BREAKS "tarvo-firmware-updater (<< ${version})")
    set(CPACK_DEBIAN_IMAGES_PACKAGE_REPLACES ${CPACK_DEBIAN_IMAGES_PACKAGE_BREAKS})
    set(CPACK_COMPONENT_IMAGES_DESCRIPTION "firmware images for Tarvo external disk drives
Holds what the firmware updater writes into the bridge controllers of
Tarvo drives, one file a model. The packages tarvo-firmware-updater and
tarvo-firmware-cli write them.")

    set(CPACK_DEBIAN_BENCH_PACKAGE_NAME tarvo-drive-bench)
    set(CPACK_DEBIAN_BENCH_PACKAGE_SOURCE tarvo-firmware-updater)
    set(CPACK_DEBIAN_BENCH_PACKAGE_DEPENDS ${images})
    set(CPACK_DEBIAN_BENCH_PACKAGE_RECOMMENDS "tarvo-firmware-updater | tarvo-firmware-cli")
    set(CPACK_COMPONENT_BENCH_DESCRIPTION "simulated drives for the Tarvo firmware updater
Simulates Tarvo drives in place of drives on a desk: a command and a
window plug them in and out, restart them and let them fail while the
firmware updater finds and flashes them as if they were attached.
.
The bench of a person is made by the first start of the window or by
\"drive-bench init\", and is kept when the package is removed.")
endif()

include(CPack)
