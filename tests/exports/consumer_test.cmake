# Installs the package to a fresh prefix and builds the consumer against it, through find_package or pkg-config
# (HOW), then runs it. BUILD, SOURCE, WORK, CXX, FLAGS and LIBDIR come from the test.
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed with ${result}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} --component qfclib)

if(HOW STREQUAL "find_package")
    run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX}
        -DCMAKE_CXX_FLAGS=${FLAGS})
    run(${CMAKE_COMMAND} --build ${WORK}/build)
    set(consumer ${WORK}/build/consumer)
else()
    set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
    execute_process(COMMAND pkg-config --cflags --libs qfclib OUTPUT_VARIABLE package_flags
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(package_flags)
    separate_arguments(FLAGS)
    set(consumer ${WORK}/consumer)
    run(${CXX} -std=c++20 ${FLAGS} ${SOURCE}/main.cpp ${package_flags} -o ${consumer})
    set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
endif()
run(${consumer} ${WORK}/library)
