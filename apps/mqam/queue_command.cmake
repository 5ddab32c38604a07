# `mqam queue`, which needs the store of the stand-in queue manager. Included by this folder's CMakeLists.txt.
add_library(mqam_queue_command STATIC
  message_source.cpp order_generator.cpp queue_command.cpp queue_put.cpp queue_report.cpp)
target_link_libraries(mqam_queue_command PRIVATE project_options PUBLIC mqam_core spoolmq_store)
