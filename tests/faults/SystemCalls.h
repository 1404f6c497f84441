#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// The kinds of system calls that this program can let fail.
enum SystemCall {
    CALL_NONE,
    CALL_OPEN, ///< of what a path or a listening socket leads to
    CALL_MAKE, ///< of a descriptor in another way
    CALL_READ,
    CALL_WRITE,
    CALL_FLUSH,
    CALL_NAME, ///< whatever makes, changes or removes a name in a folder
    CALL_SIZE,
    CALL_STATUS, ///< whatever asks for or sets attributes of a file
    CALL_LOCK,
    CALL_MAP,
    CALL_CLOSE, ///< the descriptor is closed all the same, as the system does it
    CALL_START, ///< of a thread or a process
    CALL_SOCKET, ///< on a socket; a signal can interrupt it
    CALL_SOCKET_SETUP, ///< on a socket; no signal interrupts it
    CALL_LOAD ///< of a shared library
};

/// What happens to the calls of one kind from now on: the `first` one, counted from 1, fails with `error`. One that
/// `isShort` moves half of the bytes instead. With `stays` all later ones fail with `error` too. CALL_NONE ends this.
void setFault(enum SystemCall call, int first, int error, int isShort, int stays);

/// Whether the first call to fail has been made.
int hasFailed(void);

#ifdef __cplusplus
}
#endif
