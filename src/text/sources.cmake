# Sources of the document text and files subsystem, with the platform files
# only it uses.
set(VETRA_TEXT_SOURCES
  text/result_log.cpp
  text/document_bytes.cpp
  text/document_file.cpp
  text/file_reader.cpp
  text/file_writer.cpp
  platform/file_ops.cpp
  platform/${VETRA_OS}/file.cpp
  text/charset_names.cpp
  text/text_conversion.cpp
  text/declared_encoding.cpp
)
