# Start-up additions: a third variant built without a mode so that the refusal
# of such a build is testable.

add_executable(helptext-nomode ${CMAKE_SOURCE_DIR}/src/app/main.cpp ${CMAKE_SOURCE_DIR}/src/app/CompileOption.cpp
  ${CMAKE_SOURCE_DIR}/src/app/ConsoleMain.cpp)
target_compile_definitions(helptext-nomode PRIVATE HELPTEXT_COMPILE_OPTION="")
target_link_libraries(helptext-nomode PRIVATE helptext_forms)
