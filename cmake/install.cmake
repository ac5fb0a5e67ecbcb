# What an installation holds: the module and its platform library, the headers, the static kit for transport
# plug-ins, the tools, and the two ways for other builds to find them (pkg-config and find_package). Transports
# install themselves.
include(CMakePackageConfigHelpers)

set(qvn_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qvn)

foreach(target QR__serv qvn_platform qvn_transport_kit qvn_transport_module)
  if(TARGET ${target})
    install(TARGETS ${target} EXPORT qvn
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
      INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  endif()
endforeach()
# Each finds the platform library wherever the whole is put.
if(TARGET QR__serv)
  set_target_properties(QR__serv PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()
foreach(target qvn_transport_ipv4 qvn_transport_usb1)
  if(TARGET ${target})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/../..")
  endif()
endforeach()
if(TARGET qvn_transport_usb1)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/udev/70-qvn-usb.rules DESTINATION lib/udev/rules.d COMPONENT usb)
endif()
# Its headers need it of whoever includes them.
target_compile_features(qvn_transport_kit INTERFACE cxx_std_20)
if(TARGET qvn)
  install(TARGETS qvn RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

# All that is left is for those who build against it.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qvn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

install(FILES ${PROJECT_SOURCE_DIR}/src/kit/transport_exports.map DESTINATION ${CMAKE_INSTALL_DATADIR}/qvn)

install(EXPORT qvn NAMESPACE qvn:: FILE qvnTargets.cmake DESTINATION ${qvn_package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qvnConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qvnConfig.cmake INSTALL_DESTINATION ${qvn_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qvnConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qvnConfig.cmake ${PROJECT_BINARY_DIR}/qvnConfigVersion.cmake
  DESTINATION ${qvn_package_dir})

# The prefix as seen from the directory of the file, which may be moved with the rest.
file(RELATIVE_PATH qvn_prefix_from_pkgconfig /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(file qvn.pc qvn-transport.pc)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${file}.in ${PROJECT_BINARY_DIR}/${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
