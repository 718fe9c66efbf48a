# What goes where, and into which part of the package: Library runs a host, Development builds one, Tools and
# Documentation stand for themselves.

# The tools and the stand-ins find the library beside them, wherever the whole is unpacked.
if(UNIX AND NOT APPLE)
  file(RELATIVE_PATH bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(KORVOWEB_LIBRARY_RPATH "$ORIGIN")
  set(KORVOWEB_TOOL_RPATH "$ORIGIN/${bin_to_lib}")
endif()

function(korvoweb_install_library target)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "${KORVOWEB_LIBRARY_RPATH}")
  install(TARGETS ${target} EXPORT NQKorvoWebTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Library
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Library NAMELINK_COMPONENT Development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
endfunction()

function(korvoweb_install_headers folder)
  install(FILES ${ARGN} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT Development)
endfunction()

# A program with its manual page and, where there is one, its completion for bash.
function(korvoweb_install_tool target)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${KORVOWEB_TOOL_RPATH}")
  install(TARGETS ${target} EXPORT NQKorvoWebToolsTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
  install(FILES ${target}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Tools)
  install(FILES completions/${target}.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT Tools
    RENAME ${target})
endfunction()

function(korvoweb_install_package_files)
  set(cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/NQKorvoWeb)
  install(EXPORT NQKorvoWebTargets NAMESPACE NQKorvoWeb:: DESTINATION ${cmake_dir} COMPONENT Development)
  if(KORVOWEB_BUILD_TOOLS)
    install(EXPORT NQKorvoWebToolsTargets NAMESPACE NQKorvoWeb:: DESTINATION ${cmake_dir} COMPONENT Tools)
  endif()

  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/NQKorvoWebConfig.cmake.in" NQKorvoWebConfig.cmake
    INSTALL_DESTINATION ${cmake_dir})
  write_basic_package_version_file(NQKorvoWebConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES
    "${CMAKE_CURRENT_BINARY_DIR}/NQKorvoWebConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/NQKorvoWebConfigVersion.cmake"
    DESTINATION ${cmake_dir} COMPONENT Development)

  korvoweb_configure_pkg_config_file()
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/NQKorvoWeb.pc"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
endfunction()

# Paths are relative to the file itself, so that the tree may be moved.
function(korvoweb_configure_pkg_config_file)
  set(pc_dir "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
  file(RELATIVE_PATH PC_TO_LIB "${pc_dir}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  file(RELATIVE_PATH PC_TO_INCLUDE "${pc_dir}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
  if(NOT BUILD_SHARED_LIBS)
    set(PC_STATIC_LIBS "-lNQSharedBase -lNQLogging")
    set(PC_STATIC_DEFINITION "-DNQKORVOWEB_STATIC")
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/NQKorvoWeb.pc.in" NQKorvoWeb.pc @ONLY)
endfunction()

# The site is there when it has been made: target docs.
function(korvoweb_install_documents)
  install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation)
  install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation)
  install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation
    FILES_MATCHING PATTERN *.md PATTERN *.png PATTERN *.txt PATTERN CMakeLists.txt EXCLUDE
    PATTERN site EXCLUDE PATTERN snippets EXCLUDE)
  install(DIRECTORY "${PROJECT_BINARY_DIR}/docs/html" DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation OPTIONAL)
endfunction()
