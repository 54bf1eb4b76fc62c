# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# CPack runs this when it has made the packages. In those with debug symbols it names the files by where it has laid them
# itself, in a folder that only this machine has; here they get the names that they have when they are installed.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(package MATCHES "\\.ddeb$")
    set(folder ${package}.folder)
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${folder}/DEBIAN/md5sums sums)
    string(REGEX REPLACE "  /[^\n]*/usr/lib/debug/" "  usr/lib/debug/" sums "${sums}")
    file(WRITE ${folder}/DEBIAN/md5sums "${sums}")
    execute_process(COMMAND dpkg-deb --root-owner-group -Zgzip --build ${folder} ${package} OUTPUT_QUIET
                    COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${folder})
  endif()
endforeach()
