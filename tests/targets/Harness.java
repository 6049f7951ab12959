import halvorn.types.Data;
import halvorn.types.Diagnostic;
import halvorn.types.Hardware;
import halvorn.types.Raise;
import halvorn.types.Vector;
import java.io.BufferedReader;
import java.io.File;
import java.io.FileInputStream;
import java.io.InputStreamReader;
import java.io.PrintStream;
import java.io.StringWriter;
import java.lang.reflect.Field;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;
import javax.tools.JavaCompiler;
import javax.tools.StandardJavaFileManager;
import javax.tools.ToolProvider;

/**
 * Compiles generated classes and runs functions of them, each with fresh storage, and prints a line for
 * each: what came out and the calls that left the module. The plan has a line for each step, its parts
 * between tabs:
 *
 *   job FOLDER CLASS MODULE        what follows is about this class
 *   float SYSCALL                  gives a FLOAT
 *   text SYSCALL                   gives a STRING
 *   values SYSCALL COUNT           gives one of so many values, the first 0
 *   set CLASS FIELD NAME VALUE...  an attribute of a data item: numbers, =FIELD or other texts
 *   build                          compiles; prints "built", or "problem" and why
 *   run FUNCTION COUNT ARGUMENT... ANSWER...
 */
final class Harness implements Hardware {

    /** Milliseconds of one run: far beyond what one needs that ends, on a busy machine too. */
    private static final long LONGEST = 8000;

    private static final Set<String> floats = new HashSet<>();
    private static final Set<String> texts = new HashSet<>();
    private static final Map<String, Integer> valueCounts = new HashMap<>();
    private static final List<String[]> attributes = new ArrayList<>();
    private static String folder;
    private static String className;
    private static String prefix;

    private final StringBuilder log = new StringBuilder();
    private final List<Integer> answers;
    private int next;

    private Harness(List<Integer> answers) {
        this.answers = answers;
    }

    private static String shown(Object value) {
        if (value == null) return "0";
        if (value instanceof Vector) return '"' + value.toString() + '"';
        if (value instanceof String) return '"' + (String) value + '"';
        if (value instanceof Float) return Integer.toString(Float.floatToRawIntBits((Float) value));
        if (value instanceof Character) return Integer.toString((Character) value);
        if (value instanceof Boolean) return (Boolean) value ? "1" : "0";
        return value.toString();
    }

    @Override
    public Object syscall(int number, String name, Object[] arguments) {
        log.append(' ').append(name.startsWith(prefix) ? name.substring(prefix.length()) : name);
        for (int i = 0; i < arguments.length; ++i)
            log.append(i == 0 ? "(" : ",").append(shown(arguments[i]));
        log.append(arguments.length == 0 ? "()" : ")");
        int answer = next < answers.size() ? answers.get(next) : 0;
        ++next;
        if (floats.contains(name)) return Float.intBitsToFloat(answer);
        if (texts.contains(name)) return answer == 0 ? null : "answer";
        Integer values = valueCounts.get(name);
        return values == null ? answer : Integer.remainderUnsigned(answer, values);
    }

    private static Object argument(Class<?> type, String text) {
        if (type == String.class)
            return text.startsWith("\"") ? text.substring(1, text.length() - 1) : null;
        int word = (int) (long) Long.decode(text);
        if (type == char.class) return (char) (word & 255);
        if (type == short.class) return (short) word;
        if (type == float.class) return Float.intBitsToFloat(word);
        return word;
    }

    private static Method method(Class<?> owner, String name) throws NoSuchMethodException {
        for (Method method : owner.getDeclaredMethods())
            if (method.getName().equals(name) || method.getName().equals(name + "_")) return method;
        throw new NoSuchMethodException(name);
    }

    private static String reason(Throwable thrown) {
        if (thrown instanceof ArithmeticException) return "fails Division by zero";
        if (thrown instanceof IndexOutOfBoundsException) return "fails Subscript beyond the array";
        if (thrown instanceof NullPointerException) return "fails No object";
        if (thrown instanceof StackOverflowError) return "fails by signal";
        if (thrown instanceof ThreadDeath) return "fails by signal";
        if (thrown instanceof Raise)
            return "raises " + ((Raise) thrown).value + ", " + ((Raise) thrown).argument;
        String message = String.valueOf(thrown.getMessage());
        if (message.equals("End of a function without a result")) return "stops";
        return "fails " + (thrown.getClass().getSimpleName().equals("Fault") ? message : thrown);
    }

    private static Data item(ClassLoader loader, String owner, String field) throws Exception {
        Field found = Class.forName(owner, true, loader).getDeclaredField(field);
        found.setAccessible(true);
        return (Data) found.get(null);
    }

    /** Items that a program does not have are left out. */
    private static void set(ClassLoader loader, String[] parts) throws Exception {
        Object[] values = new Object[parts.length - 4];
        try {
            for (int i = 0; i < values.length; i++) {
                String text = parts[4 + i];
                if (text.startsWith("=")) values[i] = item(loader, parts[1], text.substring(1));
                else if (text.matches("-?[0-9]+")) values[i] = Integer.valueOf(text);
                else values[i] = text;
            }
            Object value = values.length == 1 ? values[0] : values;
            item(loader, parts[1], parts[2]).with(parts[3], value);
        } catch (NoSuchFieldException | ClassNotFoundException missing) {
            return;
        }
    }

    private String outcome(String function, List<String> arguments) {
        File classes = new File(folder, "classes");
        try (URLClassLoader loader = new URLClassLoader(new URL[] { classes.toURI().toURL() })) {
            for (String[] attribute : attributes) set(loader, attribute);
            Method method = method(Class.forName(className, true, loader), function);
            method.setAccessible(true);
            Object[] values = new Object[arguments.size()];
            for (int i = 0; i < values.length; ++i)
                values[i] = argument(method.getParameterTypes()[i], arguments.get(i));
            return "= " + shown(method.invoke(null, values));
        } catch (InvocationTargetException wrapped) {
            return reason(wrapped.getCause());
        } catch (Exception | Error thrown) {
            return reason(thrown);
        }
    }

    /** A run that takes too long is stopped, in whatever state it is. */
    @SuppressWarnings({ "deprecation", "removal" })
    private static String run(String[] parts) throws InterruptedException {
        int count = Integer.parseInt(parts[2]);
        List<String> arguments = new ArrayList<>();
        List<Integer> answers = new ArrayList<>();
        for (int i = 3; i < parts.length; ++i) {
            if (i < 3 + count) arguments.add(parts[i]);
            else answers.add(Integer.valueOf(parts[i]));
        }
        Harness harness = new Harness(answers);
        Diagnostic.setHardware(harness);
        String[] outcome = { "fails by signal" };
        Thread thread = new Thread(() -> outcome[0] = harness.outcome(parts[1], arguments));
        thread.setDaemon(true);
        thread.start();
        thread.join(LONGEST);
        if (thread.isAlive()) {
            thread.stop();
            return "fails by signal";
        }
        return outcome[0] + (harness.log.length() == 0 ? "" : " ; calls" + harness.log);
    }

    private static String build() throws Exception {
        List<File> sources = new ArrayList<>();
        for (File file : new File(folder).listFiles())
            if (file.getName().endsWith(".java")) sources.add(file);
        File classes = new File(folder, "classes");
        classes.mkdirs();
        JavaCompiler compiler = ToolProvider.getSystemJavaCompiler();
        StringWriter said = new StringWriter();
        List<String> options = List.of("-Xlint:all", "-Werror", "-d", classes.getPath(), "-cp",
                                       System.getProperty("java.class.path"));
        try (StandardJavaFileManager files = compiler.getStandardFileManager(null, null, null)) {
            boolean isGood = compiler.getTask(said, files, null, options, null,
                                              files.getJavaFileObjectsFromFiles(sources)).call();
            return isGood ? "built" : "problem " + said.toString().replace('\n', '\t');
        }
    }

    private static String step(String[] parts) throws Exception {
        switch (parts[0]) {
        case "job":
            attributes.clear();
            folder = parts[1];
            className = parts[2];
            prefix = parts[3] + ".";
            return null;
        case "float":
            floats.add(parts[1]);
            return null;
        case "text":
            texts.add(parts[1]);
            return null;
        case "set":
            attributes.add(parts);
            return null;
        case "values":
            valueCounts.put(parts[1], Integer.valueOf(parts[2]));
            return null;
        case "build":
            return build();
        default:
            return run(parts);
        }
    }

    public static void main(String[] words) throws Exception {
        PrintStream out = new PrintStream(new java.io.FileOutputStream(words[1]), true,
                                          StandardCharsets.ISO_8859_1);
        try (BufferedReader plan = new BufferedReader(new InputStreamReader(
                 new FileInputStream(words[0]), StandardCharsets.ISO_8859_1))) {
            for (String line; (line = plan.readLine()) != null;) {
                String said = step(line.split("\t", -1));
                if (said != null) out.println(said);
            }
        }
        out.close();
        System.exit(0);
    }
}
