// The figures that the design gives for the op list and for what becomes of it, in the one place where they are
// changed. None is computed from the list: a test counts for itself and compares.
#pragma once

#include "ops/ops.h"

#include <cstdint>

namespace figures {

// ---- the op list ----

constexpr int gl_ops = 1102;
constexpr int wgl_ops = 63;

// What the extended mode has more, and how many of them have no handlers.
constexpr int wide_gl_ops = 381;
constexpr int wide_gl_ops_without_handlers = 11;

// How many ops of the basic mode the extended one takes in another way.
constexpr int changed_gl_ops = 270;

// The platform's library exports these many ops from the front of each list.
constexpr int exported_gl_ops = 336;
constexpr int exported_wgl_ops = 25;

constexpr int synchronous_gl_ops = 641;
constexpr int asynchronous_gl_ops = 461;
constexpr int synchronous_wgl_ops = 58;
constexpr int asynchronous_wgl_ops = 5;

struct op_range {
  int first, last;
};

// All asynchronous GL ops.
constexpr op_range asynchronous_ranges[] = {{glClearIndex_op::op, glPolygonStipple_op::op},
                                            {glEdgeFlag_op::op, glClipPlane_op::op},
                                            {glDrawBuffer_op::op, glDisable_op::op},
                                            {glEnableClientState_op::op, glDisableClientState_op::op},
                                            {glPushAttrib_op::op, glPopClientAttrib_op::op},
                                            {glFinish_op::op, glTranslatef_op::op},
                                            {glDeleteLists_op::op, glDeleteLists_op::op},
                                            {glNewList_op::op, glEdgeFlagPointer_op::op},
                                            {glArrayElement_op::op, glDrawElements_op::op},
                                            {glShadeModel_op::op, glLightiv_op::op},
                                            {glLightModelf_op::op, glMaterialiv_op::op},
                                            {glColorMaterial_op::op, glPixelMapusv_op::op},
                                            {glStencilFunc_op::op, glTexGeniv_op::op},
                                            {glTexEnvf_op::op, glTexEnviv_op::op},
                                            {glTexParameterf_op::op, glTexParameteriv_op::op},
                                            {glTexImage1D_op::op, glTexImage2D_op::op},
                                            {glDeleteTextures_op::op, glBindTexture_op::op},
                                            {glTexSubImage1D_op::op, glTexSubImage2D_op::op},
                                            {glFogf_op::op, glFogiv_op::op},
                                            {glBlendColor_op::op, glTexSubImage3D_op::op},
                                            {glActiveTexture_op::op, glCompressedTexSubImage1D_op::op},
                                            {glClientActiveTexture_op::op, glBlendFuncSeparate_op::op},
                                            {glPointParameterf_op::op, glWindowPos3sv_op::op},
                                            {glDeleteQueries_op::op, glDeleteQueries_op::op},
                                            {glBeginQuery_op::op, glEndQuery_op::op},
                                            {glBindBuffer_op::op, glDeleteBuffers_op::op},
                                            {glBufferData_op::op, glBufferSubData_op::op},
                                            {glBlendEquationSeparate_op::op, glEnableVertexAttribArray_op::op},
                                            {glLinkProgram_op::op, glUniformMatrix4x3fv_op::op},
                                            {glBindBufferARB_op::op, glDeleteBuffersARB_op::op},
                                            {glBufferDataARB_op::op, glBufferSubDataARB_op::op},
                                            {glBindRenderbuffer_op::op, glDeleteRenderbuffers_op::op},
                                            {glRenderbufferStorage_op::op, glRenderbufferStorage_op::op},
                                            {glBindFramebuffer_op::op, glDeleteFramebuffers_op::op},
                                            {glFramebufferTexture1D_op::op, glFramebufferRenderbuffer_op::op},
                                            {glGenerateMipmap_op::op, glFramebufferTextureLayer_op::op}};

constexpr int gl_ops_with_result = 55;
constexpr int gl_ops_without_result = 1047;

// GL ops that stand for another one under an ARB or EXT name.
constexpr int aliases = 280;

// GL ops that only the driver behind the library has.
constexpr int driver_ops = 2;

// What the rows of each list say (digest_test.cpp), which names the new figure when a row was changed on purpose.
constexpr std::uint64_t gl_list_digest = 0xEC7E85623AF872BF;
constexpr std::uint64_t wide_list_digest = 0x12CE4FBD6EAFE9B6;
constexpr std::uint64_t changed_list_digest = 0xB2C75B149F9EDB7A;
constexpr std::uint64_t wgl_list_digest = 0x841C1C254AFE8DDC;

// ---- the sequential path: how many slots of its table have which form ----

constexpr int broadcasts_without_result = 773;
constexpr int broadcasts_with_result = 37;
constexpr int sequential_reads = 1;
constexpr int sequential_copies = 6;
constexpr int sequential_mappings = 3;

// Aliases of a copy or of a mapping, which enter that at their own name.
constexpr int aliases_of_exceptions = 7;

// ---- the threaded path: how many ops each family of encoders has ----

constexpr int plain_asynchronous = 236;
constexpr int plain_synchronous = 303;
constexpr int fixed_vectors = 137;
constexpr int sized_vectors = 17;
constexpr int arrays_in_record = 2;
constexpr int blobs = 42;
constexpr int draws = 4;
constexpr int setters = 19;
constexpr int queries = 165;
constexpr int copies = 6;
constexpr int for_workers_only = 2;
constexpr int forwarders = 169;

// Of the ops whose data travel in a block: those that copy into one of their own, and of them those that take no
// pixels.
constexpr int copying_blobs = 41;
constexpr int copying_blobs_without_pixels = 25;

// Arrays of names, and uniforms, that lie in the record or in a block by their size.
constexpr int sized_arrays = 5 + 8 + 8;

// ---- replay ----

constexpr int wgl_ops_without_replay = 55;

static_assert(synchronous_gl_ops + asynchronous_gl_ops == gl_ops);
static_assert(synchronous_wgl_ops + asynchronous_wgl_ops == wgl_ops);
static_assert(gl_ops_with_result + gl_ops_without_result == gl_ops);
static_assert(broadcasts_without_result + broadcasts_with_result + sequential_reads + sequential_copies +
                  sequential_mappings + aliases + driver_ops ==
              gl_ops);
static_assert(plain_asynchronous + plain_synchronous + fixed_vectors + sized_vectors + arrays_in_record + blobs +
                  draws + setters + queries + copies + for_workers_only + forwarders ==
              gl_ops);

}  // namespace figures
