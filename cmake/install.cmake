# SPDX-License-Identifier: Apache-2.0

# Says what `cmake --install` and the packages contain. The components are runtime (programs, module, documents),
# spoolmq (the stand-in queue manager), dev (header and examples for authors of hosts) and symbols (debug symbols;
# packages only).

# The files of the targets are installed as they are: they have no search path that would have to be changed.
install(PROGRAMS $<TARGET_FILE:mqam> DESTINATION ${MQAMOD_INSTALL_BIN} COMPONENT runtime)
install(FILES $<TARGET_FILE:mqamod> $<TARGET_FILE:mqamjournal> DESTINATION ${MQAMOD_INSTALL_MODULE} COMPONENT runtime)
install(FILES $<TARGET_FILE:spoolmq_mqm> $<TARGET_FILE:spoolmq_mqic>
  DESTINATION ${MQAMOD_INSTALL_SPOOLMQ} COMPONENT spoolmq)

install(FILES include/mqamod.h include/mqamjournal.h DESTINATION ${MQAMOD_INSTALL_INCLUDE} COMPONENT dev)
install(DIRECTORY examples DESTINATION ${MQAMOD_INSTALL_DOC} COMPONENT dev
  PATTERN CMakeLists.txt EXCLUDE)

install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${MQAMOD_INSTALL_DOC} COMPONENT runtime)
install(DIRECTORY docs DESTINATION ${MQAMOD_INSTALL_DOC} COMPONENT runtime FILES_MATCHING
  PATTERN *.md PATTERN *.svg PATTERN branches-not-taken.md EXCLUDE)
if(NOT WIN32)
  install(FILES packaging/copyright DESTINATION ${MQAMOD_INSTALL_DOC} COMPONENT runtime)
endif()

# Manual pages and completion come from the program itself, from the tables that parse its options.
if(NOT WIN32 AND NOT CMAKE_CROSSCOMPILING AND NOT MQAMOD_SANITIZE)
  set(pages ${CMAKE_BINARY_DIR}/pages)
  file(MAKE_DIRECTORY ${pages}/man1)
  add_custom_command(OUTPUT ${pages}/mqam.bash ${pages}/_mqam ${pages}/man1/mqam.1
    COMMAND mqam completion bash >${pages}/mqam.bash
    COMMAND mqam completion zsh >${pages}/_mqam
    COMMAND mqam manual ${pages}/man1
    DEPENDS mqam)
  add_custom_target(command_pages ALL DEPENDS ${pages}/mqam.bash)
  install(DIRECTORY ${pages}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT runtime)
  install(FILES ${pages}/mqam.bash RENAME mqam
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT runtime)
  install(FILES ${pages}/_mqam DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT runtime)
endif()

# Debuggers look for the symbols of /usr/bin/mqam in /usr/lib/debug/usr/bin, and on Windows next to the program.
get_property(split_targets GLOBAL PROPERTY MQAMOD_SPLIT_TARGETS)
foreach(target IN LISTS split_targets)
  set(directory ${MQAMOD_INSTALL_BIN})
  if(target STREQUAL "mqamod" OR target STREQUAL "mqamjournal")
    set(directory ${MQAMOD_INSTALL_MODULE})
  elseif(target MATCHES "^spoolmq_")
    set(directory ${MQAMOD_INSTALL_SPOOLMQ})
  endif()
  if(NOT WIN32)
    set(directory lib/debug/usr/${directory})
  endif()
  install(FILES $<TARGET_FILE:${target}>.debug DESTINATION ${directory} COMPONENT symbols EXCLUDE_FROM_ALL)
endforeach()
