# Debian packages, one per install component: `cpack -G DEB` in a build with the prefix /usr (preset "package"), where
# they belong.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  return()
endif()

# component    package            section     depends on components
set(qvn_packages
  "runtime     libqr-serv0        libs"
  "development libqr-serv-dev     libdevel    runtime"
  "tools       qvn-tools          utils       runtime"
  "transports  qvn-transports     net         runtime"
  "cups-backend cups-backend-qvn  net         runtime"
  "sane-backend libsane-qvn       libs        runtime"
  "python      python3-qvn        python      runtime")
if(QVN_WITH_USB)
  list(APPEND qvn_packages "usb qvn-usb net runtime")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_CONTACT "The qvn maintainers <maintainers@qvn.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_OUTPUT_FILE_PREFIX packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libraries of this build, which no installed package knows; the packages depend on theirs by component.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/src/platform)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# What the library's package says to the package manager: renew the linker's cache, who provides its libraries, and
# what goes with a purge.
set(qvn_control triggers shlibs postrm)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "communication library for printers, scanners and HID devices
Programs print, scan, exchange packets and hear alerts through one C interface
of 70 functions. Devices are reached through transport plug-ins; devices and
settings are kept in a registry that all programs of the machine share.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "communication library for printers, scanners and HID devices (development)
Headers, the static kit for transport plug-ins, and the files by which
pkg-config and CMake find them.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command line of the QR__serv communication library, and a simulated printer
qvn finds, shows, configures and prints to devices from a shell; qvn-sim is a
printer on loopback that takes jobs, raises alerts and misbehaves on request.")
set(CPACK_COMPONENT_TRANSPORTS_DESCRIPTION "transport plug-ins of the QR__serv communication library
Modules that reach devices; the one for network printers over IPv4 is here.
They are registered with the command qvn of the package qvn-tools.")
set(CPACK_COMPONENT_USB_DESCRIPTION "USB transport plug-in of the QR__serv communication library
The module that reaches printers, scanners and HID devices on USB, and the udev
rules that let the group lp use them. It is registered with the command qvn of
the package qvn-tools.")
set(CPACK_COMPONENT_CUPS-BACKEND_DESCRIPTION "CUPS backend for printers of the QR__serv communication library
Queues with a device of the form qvn://PORTNAME print through the library,
show the printer's alerts as their states and cancel jobs on the printer.")
set(CPACK_COMPONENT_SANE-BACKEND_DESCRIPTION "SANE backend for scanners of the QR__serv communication library
Programs that scan through SANE, such as scanimage, use the scanners that the
library's registry holds as qvn:PORTNAME.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Python module for the QR__serv communication library
The module qvn prints, scans, exchanges packets, hears alerts and buttons and
reads and sets attributes; all functions of the library can be called.")

list(TRANSFORM qvn_control PREPEND ${CMAKE_CURRENT_LIST_DIR}/debian/)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${qvn_control})
# Setting the library up (QvnInstall) runs a program of the tools.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS qvn-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS qvn-transports)
set(CPACK_DEBIAN_CUPS-BACKEND_PACKAGE_DEPENDS cups-daemon)
set(CPACK_DEBIAN_CUPS-BACKEND_PACKAGE_RECOMMENDS "qvn-tools, qvn-transports")
set(CPACK_DEBIAN_SANE-BACKEND_PACKAGE_RECOMMENDS "qvn-tools, qvn-transports")
# The administrator's changes to what SANE loads survive an upgrade.
set(CPACK_DEBIAN_SANE-BACKEND_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/conffiles)
set(CPACK_DEBIAN_USB_PACKAGE_RECOMMENDS "qvn-tools, udev")
set(CPACK_DEBIAN_USB_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/usb/postinst)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "qvn-tools, qvn-transports")
# Compiled when it is installed; what was compiled goes with it.
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/debian/python/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/python/prerm)

set(qvn_changelog ${PROJECT_BINARY_DIR}/changelog.gz)
add_custom_command(OUTPUT ${qvn_changelog}
  COMMAND sh -c "gzip -9nc \"$1\" >\"$2\"" sh ${CMAKE_CURRENT_LIST_DIR}/debian/changelog ${qvn_changelog}
  DEPENDS ${CMAKE_CURRENT_LIST_DIR}/debian/changelog VERBATIM)
add_custom_target(qvn_changelog ALL DEPENDS ${qvn_changelog})

foreach(entry IN LISTS qvn_packages)
  string(REGEX REPLACE " +" ";" entry ${entry})
  list(POP_FRONT entry component package section)
  string(TOUPPER ${component} key)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${key}_DEPENDS ${entry})
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
    COMPONENT ${component})
  install(FILES ${qvn_changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

include(CPack)
