/* Starts the user-mode emulator (argv[1...]) with waitid(P_PIDFD, ...) refused.
 *
 * QtCore's child-process code (forkfd) takes a kernel that answers
 * waitid(P_PIDFD, INT_MAX) with EBADF as one that also has clone(CLONE_PIDFD).
 * qemu-user 7.2 passes waitid to the kernel but refuses CLONE_PIDFD, and Qt
 * then goes on with a child pid of -1 and an uninitialised descriptor: the
 * start fails, and a later QProcess::kill() becomes kill(-1, SIGKILL), which
 * ends every process the user may signal. With EINVAL from waitid, Qt uses its
 * classic fork and SIGCHLD path, which the emulator supports. The seccomp
 * filter is inherited by everything the emulated program starts.
 *
 * Built by cmake/armhf-toolchain.cmake with the host's compiler. */
#include <errno.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#if defined(__x86_64__)
#define HOST_AUDIT_ARCH AUDIT_ARCH_X86_64
#elif defined(__aarch64__)
#define HOST_AUDIT_ARCH AUDIT_ARCH_AARCH64
#else
#error "unknown build machine: add its AUDIT_ARCH"
#endif

#define ID_TYPE_PIDFD 3 /* P_PIDFD, missing from older headers */

int main(int argc, char** argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: %s EMULATOR [ARGUMENT...]\n", argv[0]);
        return 2;
    }
    struct sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, HOST_AUDIT_ARCH, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_waitid, 0, 3),
        /* Low word of the first argument (little-endian host). */
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, args[0])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, ID_TYPE_PIDFD, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | (EINVAL & SECCOMP_RET_DATA)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    struct sock_fprog program = {(unsigned short)(sizeof filter / sizeof filter[0]), filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0
        || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        /* Never run the emulator without the filter: see above. */
        fprintf(stderr, "%s: seccomp filter refused: %s\n", argv[0], strerror(errno));
        return 125;
    }
    execvp(argv[1], argv + 1);
    fprintf(stderr, "%s: %s: %s\n", argv[0], argv[1], strerror(errno));
    return 127;
}
