/* launcher_floor: the smallest host of a Java service, which every other one is
 * measured against.
 *
 *     launcher_floor LIBJVM CLASS [JVM_OPTION...]
 *
 * Creates the JVM, calls CLASS.start(String[]) on an attached thread and waits:
 * when start returns, it destroys the JVM; on SIGUSR1 it first calls
 * CLASS.stop(String[]) on another attached thread. Tells nothing, checks only
 * what it cannot do without, and ends with 1 then. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <jni.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>

typedef jint(JNICALL* CreateFunction)(JavaVM**, void**, void*);

static JavaVM* jvm;
static const char* className;
static sem_t event;
static atomic_int stopRequested;

static void fail(const char* what)
{
    fprintf(stderr, "launcher_floor: %s\n", what);
    exit(1);
}

static void onStopSignal(int number)
{
    (void)number;
    atomic_store(&stopRequested, 1);
    sem_post(&event);
}

static void callMethod(const char* method)
{
    JNIEnv* env = NULL;
    if ((*jvm)->AttachCurrentThread(jvm, (void**)&env, NULL) != JNI_OK) fail("cannot attach");
    jclass class = (*env)->FindClass(env, className);
    if (!class) fail("no class");
    jmethodID id = (*env)->GetStaticMethodID(env, class, method, "([Ljava/lang/String;)V");
    if (!id) fail("no method");
    jclass stringClass = (*env)->FindClass(env, "java/lang/String");
    jobjectArray arguments = (*env)->NewObjectArray(env, 0, stringClass, NULL);
    (*env)->CallStaticVoidMethod(env, class, id, arguments);
    (*jvm)->DetachCurrentThread(jvm);
}

static void* runStart(void* unused)
{
    callMethod("start");
    sem_post(&event);
    return unused;
}

static void* runStop(void* unused)
{
    callMethod("stop");
    return unused;
}

static void createJvm(const char* library, char** options, int count)
{
    void* handle = dlopen(library, RTLD_NOW | RTLD_GLOBAL);
    if (!handle) fail(dlerror());
    CreateFunction create = (CreateFunction)dlsym(handle, "JNI_CreateJavaVM");
    if (!create) fail("no JNI_CreateJavaVM");

    JavaVMOption list[count + 1];
    for (int i = 0; i < count; ++i) list[i] = (JavaVMOption){options[i], NULL};
    JavaVMInitArgs arguments = {JNI_VERSION_1_8, count, list, JNI_TRUE};
    JNIEnv* env = NULL;
    if (create(&jvm, (void**)&env, &arguments) != JNI_OK) fail("no JVM");
}

int main(int argc, char** argv)
{
    if (argc < 3) fail("needs a library and a class");
    className = argv[2];
    sem_init(&event, 0, 0);
    createJvm(argv[1], argv + 3, argc - 3);

    struct sigaction action = {.sa_handler = onStopSignal, .sa_flags = SA_RESTART};
    sigaction(SIGUSR1, &action, NULL);
    pthread_t start;
    if (pthread_create(&start, NULL, runStart, NULL) != 0) fail("no thread");
    sem_wait(&event);
    if (atomic_load(&stopRequested)) {
        pthread_t stop;
        if (pthread_create(&stop, NULL, runStop, NULL) != 0) fail("no thread");
        pthread_join(stop, NULL);
    }
    pthread_join(start, NULL);
    (*jvm)->DestroyJavaVM(jvm);
    return 0;
}
