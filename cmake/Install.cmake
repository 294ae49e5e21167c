# What `cmake --install` installs, and the Debian package that `cpack -G DEB` makes of it: the program, its manual page and
# completions, the documents and the examples. Libraries and headers of the build are no part of it.
include(GNUInstallDirs)

set(package orvanta-cox)
set(documents ${CMAKE_INSTALL_DATADIR}/doc/${package})
get_target_property(written orvcox_pages ORV_FOLDER)

install(TARGETS orvcox RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${written}/orvcox.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${written}/orvcox DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${written}/_orvcox DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES README.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY docs examples DESTINATION ${documents}
        FILES_MATCHING PATTERN *.md PATTERN *.csv PATTERN *.toml)

set(CPACK_PACKAGE_NAME ${package})
set(CPACK_PACKAGE_VENDOR "Orvanta Cox")
set(CPACK_PACKAGE_CONTACT "Orvanta Cox maintainers <maintainers@orvanta-cox.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Cox proportional hazards regression for survival data")
set(CPACK_PACKAGE_DESCRIPTION
"Fits Cox proportional hazards models to the cases of a table on the command
line: right-censored times and intervals, three rules for ties, strata, case
weights, covariates that change with time, model building, residuals, survivor
functions and tests of proportional hazards. Tables come from CSV, SQLite and
files of SAS, SPSS and Stata; results go to text, Markdown, HTML, JSON and
workbooks.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
