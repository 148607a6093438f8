// Queries of values in window coordinates, which are the host's without the offset.
#pragma once

#include "forward.h"

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
