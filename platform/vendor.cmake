# The maker's own libraries, which come with an SDK: TARVO_SDK/lib holds one library a header of this folder.

if(NOT TARVO_SDK)
    message(FATAL_ERROR "TARVO_PLATFORM=vendor needs -DTARVO_SDK=DIR, the folder of the maker's libraries")
endif()

add_library(platform-vendor INTERFACE)
foreach(library DeviceDiscovery Asmedia105X OxSemiFireWire MacDevice)
    find_library(TARVO_${library} ${library} PATHS ${TARVO_SDK}/lib NO_DEFAULT_PATH)
    if(NOT TARVO_${library})
        message(FATAL_ERROR "The library ${library} is not in ${TARVO_SDK}/lib")
    endif()
    target_link_libraries(platform-vendor INTERFACE ${TARVO_${library}})
endforeach()
if(APPLE)
    foreach(framework Security CoreServices Foundation IOKit)
        target_link_libraries(platform-vendor INTERFACE "-framework ${framework}")
    endforeach()
endif()
