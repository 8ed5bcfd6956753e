# What `cmake --install` puts where, in three components: the converter with its manual, the shared
# library, and what clients of the library are built with.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(release ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}.${PROJECT_VERSION_PATCH})
set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/gzdapi)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/gzdapi)
set(GZD_ZSH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Where the completion for zsh is installed")

install(TARGETS gzdconv gzdsynth RUNTIME COMPONENT converter)
if(TARGET gzdtool)
  install(TARGETS gzdtool RUNTIME COMPONENT converter)
  set(gzdtool_dir ${PROJECT_BINARY_DIR}/gzdtool)
  install(FILES ${gzdtool_dir}/gzdtool.1 COMPONENT converter
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${gzdtool_dir}/gzdtool.bash RENAME gzdtool COMPONENT converter
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${gzdtool_dir}/_gzdtool DESTINATION ${GZD_ZSH_COMPLETION_DIR} COMPONENT converter)
  install(FILES ${gzdtool_dir}/gzdtool.fish COMPONENT converter
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
# The page, where scripts/build-web has made it.
set(GZD_PAGE_DIR ${PROJECT_SOURCE_DIR}/build/web/dist CACHE PATH "Where the built page is")
install(FILES ${GZD_PAGE_DIR}/index.html ${GZD_PAGE_DIR}/report.html COMPONENT converter OPTIONAL
        DESTINATION ${CMAKE_INSTALL_DATADIR}/gzdapi)
install(FILES completions/gzdconv.bash RENAME gzdconv COMPONENT converter
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_gzdconv DESTINATION ${GZD_ZSH_COMPLETION_DIR} COMPONENT converter)

install(TARGETS gzdapi gzdapi_static EXPORT gzdapiTargets
        LIBRARY COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development
        INCLUDES DESTINATION ${header_dir})
install(FILES gzdapi/gzd.h gzdapi/gzd.hpp gzdapi/gzd_data.h gzdapi/gzdtypes.h
        DESTINATION ${header_dir} COMPONENT development)

# install_page PAGE COMPONENT: a page of the manual, once the build makes it.
function(install_page page component)
  string(REGEX MATCH "[0-9]$" section ${page})
  if(EXISTS ${PROJECT_SOURCE_DIR}/docs/man/${page}.in)
    install(FILES ${PROJECT_BINARY_DIR}/docs/man/${page} COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
  endif()
endfunction()
install_page(gzdconv.1 converter)
install_page(gzdsynth.1 converter)
install_page(gzdapi.3 development)

# For find_package(gzdapi).
install(EXPORT gzdapiTargets NAMESPACE gzdapi:: DESTINATION ${package_dir} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/gzdapiConfigVersion.cmake
                                 VERSION ${release} COMPATIBILITY SameMajorVersion)
install(FILES cmake/gzdapiConfig.cmake ${PROJECT_BINARY_DIR}/gzdapiConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)

# For pkg-config. Paths are relative to the file, so that a moved tree still works.
string(REGEX REPLACE "[^/]+" ".." prefix_from_pc ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
configure_file(cmake/gzdapi.pc.in gzdapi.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/gzdapi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
