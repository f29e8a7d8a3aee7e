# zorvic_add_translations(TARGET): compiles translations/*.ts into the target as resources. Without Qt's LinguistTools
# the program speaks English only. The target update_translations brings the .ts files in line with the sources; a test
# fails when that, or a translation, was forgotten.
find_package(Qt${ZORVIC_QT}LinguistTools QUIET)
set(ZORVIC_TRANSLATED_SOURCES ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/forms)
set(ZORVIC_LUPDATE_FLAGS -silent -locations none -no-obsolete)

function(zorvic_add_translations TARGET)
    if(NOT Qt${ZORVIC_QT}LinguistTools_FOUND)
        message(STATUS "No LinguistTools of Qt (qttools5-dev; of Qt 6: qt6-tools-dev): the console will speak English only")
        return()
    endif()
    file(GLOB translations CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/translations/*.ts)
    qt_add_translation(compiled ${translations})
    configure_file(${CMAKE_SOURCE_DIR}/translations/translations.qrc.in ${CMAKE_CURRENT_BINARY_DIR}/translations.qrc
        COPYONLY)
    set_property(SOURCE ${CMAKE_CURRENT_BINARY_DIR}/translations.qrc PROPERTY OBJECT_DEPENDS ${compiled})
    qt_add_resources(resources ${CMAKE_CURRENT_BINARY_DIR}/translations.qrc OPTIONS -no-compress)
    target_sources(${TARGET} PRIVATE ${resources} ${compiled})
    add_custom_target(update_translations VERBATIM
        COMMAND Qt${ZORVIC_QT}::lupdate ${ZORVIC_LUPDATE_FLAGS} ${ZORVIC_TRANSLATED_SOURCES} -ts ${translations}
        COMMENT "Updating translations")
endfunction()
