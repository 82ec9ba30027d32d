# Runs HOST in the working folder and asks for both: that it ends well, a sanitizer's verdict at its end included, and
# that it says EXPECT.
execute_process(COMMAND ${HOST} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
message("${output}${errors}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "ended with ${result}")
endif()
string(FIND "${output}" "${EXPECT}" found)
if(found EQUAL -1)
    message(FATAL_ERROR "did not say: ${EXPECT}")
endif()
