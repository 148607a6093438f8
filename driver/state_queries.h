// Queries whose answer is not the host's: values in window coordinates without the offset, and the extension names
// without those that the driver does not offer.
#pragma once

#include "forward.h"

// The names in a string of extension names, separated by blanks, that the driver offers. The result is the host's own
// string if it offers all of them, and lives as long as the process. Null gives null. Any thread.
const char* offered_extensions(const char* extensions);

template <>
void forward<glGetBooleanv_op, void>(GLenum name, GLboolean* values);
template <>
void forward<glGetDoublev_op, void>(GLenum name, GLdouble* values);
template <>
void forward<glGetFloatv_op, void>(GLenum name, GLfloat* values);
template <>
void forward<glGetIntegerv_op, void>(GLenum name, GLint* values);

template <>
void forward<glGetBooleani_v_op, void>(GLenum name, GLuint index, GLboolean* values);
template <>
void forward<glGetIntegeri_v_op, void>(GLenum name, GLuint index, GLint* values);
template <>
void forward<glGetInteger64i_v_op, void>(GLenum name, GLuint index, GLint64* values);
template <>
void forward<glGetBooleanIndexedvEXT_op, void>(GLenum name, GLuint index, GLboolean* values);
template <>
void forward<glGetIntegerIndexedvEXT_op, void>(GLenum name, GLuint index, GLint* values);

template <>
const GLubyte* forward<glGetString_op, const GLubyte*>(GLenum name);
template <>
const GLubyte* forward<glGetStringi_op, const GLubyte*>(GLenum name, GLuint index);
