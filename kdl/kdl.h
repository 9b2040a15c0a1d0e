/* kdl - tagged-field messages.
 *
 * A message is a list of fields; a field is an unsigned 32-bit tag with zero
 * or more values; a value is a run of bytes with a 32-bit length (text
 * without a terminating NUL; numbers travel as their decimal text).
 *
 * Building: a message handle (kdl_ctor_primecb) assembles a request inside a
 * caller-owned scratch buffer (kdl_open_scratch, 4096 bytes in the plug-in):
 * kdl_start_msg, then kdl_add_data per value. Adding a tag that is already
 * present appends the value to that field. A message that no longer fits the
 * scratch buffer fails cleanly and leaves the message as it was.
 *
 * Reading: kdl_get_field / kdl_get_data work on a built message and on one
 * parsed from the wire (kdl_parse). Values are read in place; they stay
 * valid until the message is changed, restarted or freed.
 *
 * Every function returns nonzero on success and 0 on failure, filling the
 * error record (when not NULL) on failure. The wire format is described in
 * docs/wire-format.md.
 */
#ifndef KDL_KDL_H
#define KDL_KDL_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
  KDL_OK = 0,
  KDL_E_ARG = 1,      /* a NULL or otherwise unusable argument */
  KDL_E_NOMEM = 2,    /* allocation failed */
  KDL_E_STATE = 3,    /* no scratch buffer attached (kdl_start_msg not called) */
  KDL_E_FULL = 4,     /* the message does not fit its scratch buffer */
  KDL_E_FORMAT = 5,   /* bytes that are not a well-formed message */
  KDL_E_NOTFOUND = 6, /* no such field, or no such value index */
  KDL_E_TOOBIG = 7    /* a length or count beyond the format's limits */
};

typedef struct KdlError {
  int32_t code;   /* KDL_OK or one of KDL_E_*; the plug-in only tests for 6 */
  char text[124]; /* a short English description, NUL-terminated */
} KdlError;

typedef struct KdlValue {
  const char* data;
  uint32_t length;
} KdlValue;

typedef struct KdlMsg KdlMsg; /* opaque message handle */

/* Makes an empty handle (neither started nor parsed) into *msg.
 * Fails: KDL_E_ARG (msg NULL), KDL_E_NOMEM. */
int32_t kdl_ctor_primecb(KdlMsg** msg, KdlError* err);
/* Frees *msg and sets it NULL; the scratch buffer it used is not touched.
 * Fails: KDL_E_ARG (msg or *msg NULL). */
int32_t kdl_dtor_primecb(KdlMsg** msg, KdlError* err);

/* Allocates a scratch buffer of `size` bytes (at least 4, the size of an
 * empty message; at most 2^30) into *scratch. The size is remembered with
 * the buffer. Fails: KDL_E_ARG (NULL, size < 4), KDL_E_TOOBIG, KDL_E_NOMEM. */
int32_t kdl_open_scratch(void** scratch, uint32_t size, KdlError* err);
/* Frees the buffer and sets *scratch NULL. A message started in it must not
 * be used afterwards (restart it elsewhere or free it).
 * Fails: KDL_E_ARG (NULL, or not a buffer from kdl_open_scratch). */
int32_t kdl_close_scratch(void** scratch, KdlError* err);

/* Starts an empty message in `scratch` (from kdl_open_scratch), dropping
 * whatever the handle held before (a parsed message included). The caller
 * may scribble on the buffer before this call; the library rewrites it.
 * Fails: KDL_E_ARG (NULL, or a buffer not from kdl_open_scratch). */
int32_t kdl_start_msg(KdlMsg* msg, void* scratch, KdlError* err);

/* Adds `count` values (value[0..count-1]) under `tag`. count may be 0, which
 * creates the field with no value (or leaves an existing field as it is).
 * Fails, leaving the message unchanged: KDL_E_ARG (msg NULL, value NULL with
 * count > 0, a value with NULL data and nonzero length), KDL_E_STATE (not
 * started, or a parsed message), KDL_E_FULL (does not fit the scratch),
 * KDL_E_TOOBIG (beyond 32-bit sizes or counts), KDL_E_NOMEM. */
int32_t kdl_add_data(KdlMsg* msg, uint32_t tag, uint32_t count, const KdlValue* value,
                     KdlError* err);

/* *count = the number of values of field `tag` (possibly 0).
 * Fails, *count unchanged: KDL_E_NOTFOUND (no such field), KDL_E_ARG,
 * KDL_E_STATE (neither started nor parsed). */
int32_t kdl_get_field(const KdlMsg* msg, uint32_t tag, uint32_t* count, KdlError* err);

/* *value = value `index` (0-based) of field `tag`, read in place.
 * Fails: KDL_E_NOTFOUND (no such field, or index >= its count), KDL_E_ARG,
 * KDL_E_STATE. */
int32_t kdl_get_data(const KdlMsg* msg, uint32_t tag, uint32_t index, KdlValue* value,
                     KdlError* err);

/* Transport. kdl_serialise exposes the encoded bytes of a message (built or
 * parsed) without copying; they stay valid until the message changes.
 * Fails: KDL_E_ARG, KDL_E_STATE (neither started nor parsed). */
int32_t kdl_serialise(const KdlMsg* msg, const void** bytes, uint32_t* length, KdlError* err);

/* Parses `length` bytes into a new message owned by *msg (free it with
 * kdl_dtor_primecb); the message keeps its own copy of the bytes. Every
 * length and count is checked against the buffer.
 * Fails, *msg unchanged: KDL_E_FORMAT (truncated, a count or length past the
 * end, trailing bytes, a tag in two fields; the text says where),
 * KDL_E_ARG (msg NULL, bytes NULL with length > 0), KDL_E_NOMEM. A parsed
 * message is read-only: kdl_add_data fails on it with KDL_E_STATE. */
int32_t kdl_parse(const void* bytes, uint32_t length, KdlMsg** msg, KdlError* err);
/* kdl_parse into an existing handle (from kdl_ctor_primecb or kdl_parse),
 * replacing what it held (a message being built is dropped; its scratch
 * buffer is not touched) and reusing the memory of earlier parses: a
 * reader that takes message after message allocates nothing per message.
 * Fails as kdl_parse does (KDL_E_ARG for a NULL handle), leaving the handle
 * neither started nor parsed. */
int32_t kdl_parse_into(KdlMsg* msg, const void* bytes, uint32_t length, KdlError* err);

#ifdef __cplusplus
}
#endif

#endif /* KDL_KDL_H */
