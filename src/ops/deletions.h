// What deletes the names that an op makes. A deletion takes one name, or how many and where they are.
#pragma once

#include "ops/ops.h"

// By the maker's number. none_op: nobody may delete one of several that were made at once.
template <int maker>
struct deletion_of {
  using op = none_op;
};

template <>
struct deletion_of<glGenTextures_op::op> {
  using op = glDeleteTextures_op;
};
template <>
struct deletion_of<glGenTexturesEXT_op::op> {
  using op = glDeleteTextures_op;
};
template <>
struct deletion_of<glCreateTextures_op::op> {
  using op = glDeleteTextures_op;
};
template <>
struct deletion_of<glGenBuffers_op::op> {
  using op = glDeleteBuffers_op;
};
template <>
struct deletion_of<glCreateBuffers_op::op> {
  using op = glDeleteBuffers_op;
};
template <>
struct deletion_of<glGenQueries_op::op> {
  using op = glDeleteQueries_op;
};
template <>
struct deletion_of<glGenQueriesARB_op::op> {
  using op = glDeleteQueriesARB_op;
};
template <>
struct deletion_of<glGenQueriesEXT_op::op> {
  using op = glDeleteQueriesEXT_op;
};
template <>
struct deletion_of<glCreateQueries_op::op> {
  using op = glDeleteQueries_op;
};
template <>
struct deletion_of<glGenProgramsARB_op::op> {
  using op = glDeleteProgramsARB_op;
};
template <>
struct deletion_of<glCreateProgram_op::op> {
  using op = glDeleteProgram_op;
};
template <>
struct deletion_of<glCreateShaderProgramv_op::op> {
  using op = glDeleteProgram_op;
};
template <>
struct deletion_of<glCreateShader_op::op> {
  using op = glDeleteShader_op;
};
template <>
struct deletion_of<glGenRenderbuffers_op::op> {
  using op = glDeleteRenderbuffers_op;
};
template <>
struct deletion_of<glCreateRenderbuffers_op::op> {
  using op = glDeleteRenderbuffers_op;
};
template <>
struct deletion_of<glGenFramebuffers_op::op> {
  using op = glDeleteFramebuffers_op;
};
template <>
struct deletion_of<glCreateFramebuffers_op::op> {
  using op = glDeleteFramebuffers_op;
};
template <>
struct deletion_of<glGenVertexArrays_op::op> {
  using op = glDeleteVertexArrays_op;
};
template <>
struct deletion_of<glCreateVertexArrays_op::op> {
  using op = glDeleteVertexArrays_op;
};
template <>
struct deletion_of<glGenSamplers_op::op> {
  using op = glDeleteSamplers_op;
};
template <>
struct deletion_of<glCreateSamplers_op::op> {
  using op = glDeleteSamplers_op;
};
template <>
struct deletion_of<glGenTransformFeedbacks_op::op> {
  using op = glDeleteTransformFeedbacks_op;
};
template <>
struct deletion_of<glCreateTransformFeedbacks_op::op> {
  using op = glDeleteTransformFeedbacks_op;
};
template <>
struct deletion_of<glGenProgramPipelines_op::op> {
  using op = glDeleteProgramPipelines_op;
};
template <>
struct deletion_of<glCreateProgramPipelines_op::op> {
  using op = glDeleteProgramPipelines_op;
};
