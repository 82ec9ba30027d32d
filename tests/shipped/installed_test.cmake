# Installs everything to a fresh prefix, moves it and starts the program through its link: a new library has the
# predefined galleries. BUILD, WORK, BINDIR and LIBDIR come from the test.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
foreach(component IN ITEMS qfclib qfc)
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix --component ${component}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(RENAME ${WORK}/prefix ${WORK}/moved)
set(program ${WORK}/moved/${BINDIR}/qfc)
set(shipped ${WORK}/moved/${LIBDIR}/qfclib)

if(NOT IS_SYMLINK ${program} OR IS_SYMLINK ${shipped}/qfc)
    message(FATAL_ERROR "the program is not reached through a link")
endif()
foreach(file IN ITEMS Orvel.dat/Default_Libtag.ini Orvel.dat/PresetItemTag.ini Orvel.dat/ARFilter.ini Orvel.dat/EffectFolders.ini
        Orvel.dat/CinelumeDatabase.db german/Orvel.dat/CinelumeDatabase.db german/Orvel.dat/qvTWTranslateData.dat)
    if(NOT EXISTS ${shipped}/${file})
        message(FATAL_ERROR "not installed: ${file}")
    endif()
endforeach()
if(EXISTS ${shipped}/Orvel.dat/qvTWTranslateData.dat)
    message(FATAL_ERROR "a language is active that nobody chose")
endif()

unset(ENV{QFCLIB_HOST_DIR})
execute_process(COMMAND ${program} --data-dir ${WORK}/library gallery list
    OUTPUT_VARIABLE galleries COMMAND_ERROR_IS_FATAL ANY)
foreach(name IN ITEMS Media "AR Stickers" "Motion Paths")
    string(FIND "${galleries}" "${name}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "no gallery ${name} in\n${galleries}")
    endif()
endforeach()
