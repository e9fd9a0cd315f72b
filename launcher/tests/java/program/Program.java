package program;

/** What the adapter's tests run: does what its first argument says, for the given milliseconds. */
class Program {
    public static void main(String[] args) throws Exception {
        Runtime.getRuntime().addShutdownHook(new Thread(() -> System.out.println("hook")));
        long millis = Long.parseLong(args[1]);
        System.out.println("ready " + millis);
        switch (args[0]) {
            case "wait" -> Thread.sleep(millis);
            case "thread" -> new Thread(() -> sleep(millis)).start();
            case "exit" -> System.exit(7);
            case "hook" -> {
                endMainAtShutdown(Thread.currentThread());
                System.out.println("main waits");
                Thread.sleep(millis);
            }
            default -> throw new IllegalStateException("thrown by main");
        }
        System.out.println("main returns");
    }

    private static void endMainAtShutdown(Thread main) {
        Runtime.getRuntime().addShutdownHook(new Thread(() -> {
            main.interrupt();
            try {
                main.join();
                System.out.println("main has ended");
            } catch (InterruptedException e) {
                throw new IllegalStateException(e);
            }
        }));
    }

    private static void sleep(long millis) {
        try {
            Thread.sleep(millis);
            System.out.println("thread ends");
        } catch (InterruptedException e) {
            System.out.println("thread is interrupted");
        }
    }
}
