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
  int32_t code;    /* KDL_OK or one of KDL_E_*; the plug-in only tests for 6 */
  char text[124];  /* a short English description, NUL-terminated */
} KdlError;

typedef struct KdlValue {
  const char* data;
  uint32_t length;
} KdlValue;

typedef struct KdlMsg KdlMsg; /* opaque message handle */

int32_t kdl_ctor_primecb(KdlMsg** msg, KdlError* err);
int32_t kdl_dtor_primecb(KdlMsg** msg, KdlError* err); /* frees *msg, sets it NULL */

/* Allocates a scratch buffer of `size` bytes into *scratch. */
int32_t kdl_open_scratch(void** scratch, uint32_t size, KdlError* err);
int32_t kdl_close_scratch(void** scratch, KdlError* err); /* frees, sets NULL */

/* Starts an empty message in `scratch` (from kdl_open_scratch). */
int32_t kdl_start_msg(KdlMsg* msg, void* scratch, KdlError* err);

/* Adds `count` values (value[0..count-1]) under `tag`. count may be 0, which
 * creates the field with no value (or leaves an existing field as it is). */
int32_t kdl_add_data(KdlMsg* msg, uint32_t tag, uint32_t count, const KdlValue* value,
                     KdlError* err);

/* Fails with KDL_E_NOTFOUND when the field is absent; else *count = its
 * number of values (possibly 0). */
int32_t kdl_get_field(const KdlMsg* msg, uint32_t tag, uint32_t* count, KdlError* err);

/* Fails with KDL_E_NOTFOUND when the field or value `index` is absent. */
int32_t kdl_get_data(const KdlMsg* msg, uint32_t tag, uint32_t index, KdlValue* value,
                     KdlError* err);

/* Transport. kdl_serialise exposes the encoded bytes of a message (built or
 * parsed) without copying; they stay valid until the message changes. */
int32_t kdl_serialise(const KdlMsg* msg, const void** bytes, uint32_t* length, KdlError* err);

/* Parses `length` bytes into a new message owned by *msg (free it with
 * kdl_dtor_primecb). Every length and count is checked against the buffer. */
int32_t kdl_parse(const void* bytes, uint32_t length, KdlMsg** msg, KdlError* err);

#ifdef __cplusplus
}
#endif

#endif /* KDL_KDL_H */
