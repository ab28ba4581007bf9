# Folders of the packages can be read by all, whatever the umask of the build.
file(GLOB_RECURSE paths LIST_DIRECTORIES true ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*)
foreach(path IN LISTS paths)
  if(IS_DIRECTORY ${path})
    file(CHMOD ${path} PERMISSIONS
      OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  endif()
endforeach()
