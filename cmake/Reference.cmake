# `reference`: pages about the public headers, in build/NAME/reference/html.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  configure_file(docs/Doxyfile.in Doxyfile @ONLY)
  add_custom_target(reference COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
                    COMMENT "Making the reference of the library's headers" VERBATIM)
endif()
