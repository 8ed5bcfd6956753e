# Three Debian packages of what Install.cmake installs, built by `cpack` (see scripts/package).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME gzdconv)
set(CPACK_PACKAGE_VERSION ${release})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGE_VENDOR "gzdconv developers")
set(CPACK_PACKAGE_CONTACT "gzdconv developers <maintainers@localhost>")
set(CPACK_COMPONENTS_ALL converter library development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(package_version ${release}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(library_package libgzdapi${PROJECT_VERSION_MAJOR})

# package COMPONENT NAME SECTION SUMMARY TEXT
macro(package component name section summary text)
  string(TOUPPER ${component} upper_component)
  set(CPACK_DEBIAN_${upper_component}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper_component}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper_component}_DESCRIPTION "${summary}\n${text}")
endmacro()
package(converter gzdconv science "converter of GZD eye-tracker recordings to text"
"gzdconv writes the samples, eye events and messages of a recording of an
Ovilo eye tracker as lines of text, in the order of time, and repairs common
faults of recordings. gzdsynth makes recordings to try it with.")
package(library ${library_package} libs "access to GZD eye-tracker recordings, shared library"
"gzdapi reads recordings of Ovilo eye trackers: samples, eye events, messages
and trials in the order of time, through a C interface.")
package(development libgzdapi-dev libdevel "access to GZD eye-tracker recordings, for development"
"gzdapi reads recordings of Ovilo eye trackers: samples, eye events, messages
and trials in the order of time, through a C interface. This package has the
headers, the static library, the manual page, and files for CMake and
pkg-config.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library_package} (= ${package_version}), zlib1g-dev")

file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)

configure_file(cmake/PackageFiles.cmake.in PackageFiles.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/PackageFiles.cmake)
include(CPack)
