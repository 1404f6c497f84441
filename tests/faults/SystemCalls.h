#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// The kinds of system calls that this program can let fail.
enum SystemCall {
    CALL_NONE,
    CALL_OPEN, ///< on what a path or a listening socket leads to
    CALL_MAKE, ///< that give another descriptor for one
    CALL_READ,
    CALL_WRITE,
    CALL_FLUSH,
    CALL_NAME, ///< that create, change or remove a name in a folder
    CALL_SIZE,
    CALL_STATUS, ///< that get or set attributes of a file
    CALL_LOCK,
    CALL_MAP,
    CALL_CLOSE, ///< the descriptor is closed nevertheless, as the system does
    CALL_START, ///< of a thread or a process
    CALL_SOCKET, ///< on a socket; a signal can interrupt it
    CALL_SOCKET_SETUP, ///< on a socket; no signal interrupts it
    CALL_LOAD ///< of a shared library
};

/// Decides what happens to later calls of one kind: the `first` one, counted from 1, fails with `error`. If `isShort`,
/// it transfers half of the bytes instead. If `stays`, all later ones fail with `error` too. CALL_NONE ends this.
void setFault(enum SystemCall call, int first, int error, int isShort, int stays);

/// Whether a call has failed.
int hasFailed(void);

#ifdef __cplusplus
}
#endif
