# SPDX-License-Identifier: Apache-2.0

# Says where the finished files are in an installed tree. The programs look for the module in their own directory and
# then in the one that install_layout.h names.
include(GNUInstallDirs)

if(WIN32)
  # A zip file is unpacked anywhere, so programs and DLLs are at its top.
  set(MQAMOD_INSTALL_BIN .)
  set(MQAMOD_INSTALL_MODULE .)
  set(MQAMOD_INSTALL_SPOOLMQ spoolmq)
  set(MQAMOD_INSTALL_DOC .)
  set(MQAMOD_INSTALL_INCLUDE include)
else()
  set(MQAMOD_INSTALL_BIN ${CMAKE_INSTALL_BINDIR})
  # Hosts load the module by its path, so it is kept out of the directories that the system searches.
  set(MQAMOD_INSTALL_MODULE ${CMAKE_INSTALL_LIBDIR}/mqamod)
  # The stand-in has the names of IBM's libraries. In this directory only a program that is given its path finds it.
  set(MQAMOD_INSTALL_SPOOLMQ ${CMAKE_INSTALL_LIBDIR}/mqamod/spoolmq)
  set(MQAMOD_INSTALL_DOC ${CMAKE_INSTALL_DOCDIR})
  set(MQAMOD_INSTALL_INCLUDE ${CMAKE_INSTALL_INCLUDEDIR})
endif()

file(RELATIVE_PATH MQAMOD_MODULE_FROM_BIN /prefix/${MQAMOD_INSTALL_BIN} /prefix/${MQAMOD_INSTALL_MODULE})
if(NOT MQAMOD_MODULE_FROM_BIN)
  set(MQAMOD_MODULE_FROM_BIN .)
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/install_layout.h.in ${CMAKE_BINARY_DIR}/generated/install_layout.h @ONLY)
