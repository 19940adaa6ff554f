# Warnings for the project's own targets; CI turns them into errors with TERVIK_WERROR=ON.
function(tervik_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(TERVIK_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
