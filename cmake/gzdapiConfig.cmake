# Targets: gzdapi::gzdapi, the shared library, and gzdapi::gzdapi_static.
include(CMakeFindDependencyMacro)
find_dependency(ZLIB)
include("${CMAKE_CURRENT_LIST_DIR}/gzdapiTargets.cmake")
