package program;

import java.util.concurrent.Callable;
import java.util.concurrent.FutureTask;

/** What the adapter's tests run: does what its first argument says, for the given milliseconds. */
class Program {
    public static void main(String[] args) throws Exception {
        Thread main = Thread.currentThread();
        long millis = Long.parseLong(args[1]);
        atExit(() -> print("hook"));
        if (args[0].equals("hook")) atExit(() -> end(main));
        print("ready");
        switch (args[0]) {
            case "wait", "hook" -> Thread.sleep(millis);
            case "thread" -> thread(() -> sleep(millis)).start();
            case "exit" -> System.exit(7);
            default -> throw new IllegalStateException("thrown by main");
        }
        print("main returns");
    }

    private static Thread thread(Callable<String> body) {
        return new Thread(new FutureTask<>(body));
    }

    private static void atExit(Callable<String> body) {
        Runtime.getRuntime().addShutdownHook(thread(body));
    }

    private static String print(String text) {
        System.out.println(text);
        return text;
    }

    private static String sleep(long millis) throws InterruptedException {
        Thread.sleep(millis);
        return print("thread ends");
    }

    private static String end(Thread main) throws InterruptedException {
        main.interrupt();
        main.join();
        return print("main has ended");
    }
}
