# Installs the library into a folder of its own, builds a program against that alone, and runs it:
# cmake -DBUILD=... -DWORK=... -DSOURCE=... -DCOMPILER=... -DDRAW=... -DLIBDIR=... -DFLAGS=... -P this
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/patterns)
function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/usr --component solver)
run(${COMPILER} -std=c++20 -O1 -Wall -Wextra -Werror ${FLAGS} -I${WORK}/usr/include ${SOURCE} -o ${WORK}/program
    -L${WORK}/usr/${LIBDIR} -lvantrel-solver -Wl,-rpath,${WORK}/usr/${LIBDIR})
run(${DRAW} ${WORK}/picture)
run(${WORK}/program ${WORK}/picture ${WORK}/patterns)
