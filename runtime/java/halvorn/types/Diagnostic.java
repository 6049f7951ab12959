package halvorn.types;

import java.util.ArrayList;
import java.util.HashMap;
import java.util.IdentityHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.BiConsumer;
import java.util.function.Consumer;
import java.util.function.Function;
import java.util.function.IntConsumer;
import java.util.function.IntSupplier;
import java.util.function.ObjIntConsumer;
import java.util.function.Supplier;
import java.util.function.ToIntFunction;

/**
 * What every class generated from a TOLL module extends: the arithmetic and the references that the
 * generated text uses, and the way to the program around it. Names that begin with "toll" are the
 * generated text's; a program uses {@link #setHardware} and the generated functions themselves.
 *
 * <p>A word is an int, which wraps at 32 bits. Truth values, enumerations and quantities are words as
 * well; a quantity counts in the unit of its kind.
 */
public abstract class Diagnostic {

    /** The values of the truth type. */
    public static final int FALSE = 0;
    public static final int TRUE = 1;

    /** The directions of a conversion. */
    public static final int FORWARDS = 0;
    public static final int BACKWARDS = 1;

    private static volatile Hardware hardware = new Hardware() { };

    // By class loader and name: a module that is loaded twice has its functions twice.
    private static final Map<List<Object>, Object> FUNCTIONS = new HashMap<>();

    // Objects that words stand for, in the order of their words; and the words.
    private static final List<Object> CARRIED = new ArrayList<>();
    private static final Map<Object, Integer> WORDS = new IdentityHashMap<>();

    // Such words lie apart, as addresses do.
    private static final int WORD_STEP = 4;

    /** There is nothing to make an object of: all that is generated is static. */
    protected Diagnostic() { }

    /**
     * Gives all modules of the program what serves their syscalls and their data.
     *
     * @param served  never null
     */
    public static void setHardware(Hardware served) {
        if (served == null) throw new NullPointerException("no hardware");
        hardware = served;
    }

    // ---- Calls out of the program ----

    /** Calls what has its body outside of TOLL; the further arguments may be null. */
    protected static Object toll_syscall(int number, String name, Object[] more,
                                         Object... arguments) {
        int count = more == null ? 0 : more.length;
        Object[] all = new Object[arguments.length + count];
        System.arraycopy(arguments, 0, all, 0, arguments.length);
        if (count > 0) System.arraycopy(more, 0, all, arguments.length, count);
        return hardware.syscall(number, name, all);
    }

    /** The word that an answer stands for; no answer is 0. */
    protected static int toll_word(Object answer) {
        if (answer == null) return 0;
        if (answer instanceof Boolean) return (Boolean) answer ? TRUE : FALSE;
        if (answer instanceof Character) return (Character) answer;
        return ((Number) answer).intValue();
    }

    /** The float that an answer stands for; no answer is 0. */
    protected static float toll_float(Object answer) {
        return answer == null ? 0 : ((Number) answer).floatValue();
    }

    /** The item of data, or the object, of a type and name. */
    protected static Object toll_item(String type, String name) {
        return hardware.item(type, name);
    }

    /** The number that a name of a type stands for. */
    protected static int toll_value(String type, String name) {
        return hardware.value(type, name);
    }

    // ---- Ends of a run ----

    /** Ends the whole run, as a function with a result does that runs off its end. */
    protected static Fault toll_stop() {
        return new Fault("End of a function without a result");
    }

    /** Ends the run at a node that has no leg for its value. */
    protected static Fault toll_lost() {
        return new Fault("Value without a leg");
    }

    /** Lets a handler run for an exception of its own number, and passes on any other. */
    protected static void toll_take(Raise raised, int number) {
        if (raised.value != number) throw raised;
    }

    // ---- Arithmetic ----

    protected static int abs(int value) {
        return Math.abs(value);
    }

    protected static int min(int a, int b) {
        return Math.min(a, b);
    }

    protected static int max(int a, int b) {
        return Math.max(a, b);
    }

    /** The quotient toward zero, where javac would take a literal divisor for a mistake. */
    protected static int toll_div(int a, int b) {
        return a / b;
    }

    /** The remainder of that quotient. */
    protected static int toll_rem(int a, int b) {
        return a % b;
    }

    /** a * b / scale in binary64, toward zero; the low 32 bits of what goes beyond them. */
    protected static int toll_smul(int a, int b, int scale) {
        return (int) (long) ((double) a * (double) b / (double) scale);
    }

    /** (a / b) * scale, likewise. */
    protected static int toll_sdiv(int a, int b, int scale) {
        if (b == 0) throw new ArithmeticException("/ by zero");
        return (int) (long) ((double) a / (double) b * (double) scale);
    }

    /** Milliseconds from microseconds, toward zero. */
    protected static int toll_clock_of_time(int time) {
        return time / 1000;
    }

    /** Microseconds from milliseconds; wraps. */
    protected static int toll_time_of_clock(int clock) {
        return clock * 1000;
    }

    protected static float toll_float_of_word(int bits) {
        return Float.intBitsToFloat(bits);
    }

    protected static int toll_word_of_float(float value) {
        return Float.floatToRawIntBits(value);
    }

    /**
     * The word that stands for an object: the same for one object each time, 0 for none. An object that
     * was once in a word is kept, as nobody can tell when the last copy of the word is gone.
     */
    protected static int toll_word_of_object(Object object) {
        if (object == null) return 0;
        synchronized (CARRIED) {
            Integer known = WORDS.get(object);
            if (known != null) return known;
            CARRIED.add(object);
            WORDS.put(object, CARRIED.size() * WORD_STEP);
            return CARRIED.size() * WORD_STEP;
        }
    }

    /** The object that a word stands for; a word that never came from an object ends the run. */
    protected static Object toll_object_of_word(int word) {
        if (word == 0) return null;
        synchronized (CARRIED) {
            int place = word / WORD_STEP - 1;
            if (word % WORD_STEP == 0 && place >= 0 && place < CARRIED.size())
                return CARRIED.get(place);
        }
        throw new Fault("No object behind the word " + word);
    }

    // ---- Conversion of quantities ----

    /** The value that a converter makes of one; direction BACKWARDS asks for the raw one. */
    protected static int toll_cvt(int value, Data converter, int direction) {
        return converter.convert(value, direction == BACKWARDS);
    }

    /** The same as text: that of the state which holds it, else its decimal digits. */
    protected static String toll_cvts(int value, Data converter, int direction) {
        return converter.stateText(toll_cvt(value, converter, direction));
    }

    /** A condition that javac is not to take for a constant. */
    protected static boolean toll_truth(int value) {
        return value != 0;
    }

    /** A value that nobody takes. */
    protected static void toll_drop(int value) { }

    protected static void toll_drop(float value) { }

    protected static void toll_drop(Object value) { }

    // ---- Texts ----

    /**
     * Compares two texts byte by byte; a text holds one byte in each character. No text is equal to no
     * text, and below any.
     */
    protected static int toll_compare(String a, String b) {
        if (a == null || b == null) return a == b ? 0 : a == null ? -1 : 1;
        return a.compareTo(b);
    }

    /** The text that an array of characters holds, up to its first 0. */
    protected static String toll_text(Vector characters) {
        return characters.text();
    }

    // ---- Functions as values ----

    /** The one object that stands for a function of a type, so that two uses of it are the same. */
    @SuppressWarnings("unchecked")
    protected static <T> T toll_function(String name, T function) {
        List<Object> key = List.of(function.getClass().getClassLoader(), name);
        synchronized (FUNCTIONS) {
            Object known = FUNCTIONS.get(key);
            if (known == null) FUNCTIONS.put(key, function);
            return known == null ? function : (T) known;
        }
    }

    // ---- References ----

    protected static Vector toll_all(int[] items) {
        return Vector.of(items, 0);
    }

    protected static Vector toll_all(char[] items) {
        return Vector.of(items, 0);
    }

    protected static Vector toll_all(short[] items) {
        return Vector.of(items, 0);
    }

    protected static Items<Float> toll_all(float[] items) {
        return Items.of(items, 0);
    }

    protected static <T> Items<T> toll_all(T[] items) {
        return Items.of(items, 0);
    }

    /** The items from one on; each of these refers to the array itself. */
    protected static Vector toll_from(int[] items, int first) {
        return Vector.of(items, first);
    }

    protected static Vector toll_from(char[] items, int first) {
        return Vector.of(items, first);
    }

    protected static Vector toll_from(short[] items, int first) {
        return Vector.of(items, first);
    }

    protected static Items<Float> toll_from(float[] items, int first) {
        return Items.of(items, first);
    }

    protected static <T> Items<T> toll_from(T[] items, int first) {
        return Items.of(items, first);
    }

    protected static Vector toll_from(Vector items, int first) {
        return items.from(first);
    }

    protected static <T> Items<T> toll_from(Items<T> items, int first) {
        return items.from(first);
    }

    /** One item that is read and written by functions. */
    protected static Vector toll_static(IntSupplier get, IntConsumer set) {
        return Vector.of(get, set);
    }

    protected static <T> Items<T> toll_static_item(Supplier<T> get, Consumer<T> set) {
        return Items.of(get, set);
    }

    /** A field of an object. */
    protected static <R> Vector toll_field(R object, ToIntFunction<R> get, ObjIntConsumer<R> set) {
        return Vector.of(() -> get.applyAsInt(object), value -> set.accept(object, value));
    }

    protected static <R, T> Items<T> toll_field_item(R object, Function<R, T> get,
                                                     BiConsumer<R, T> set) {
        return Items.of(() -> get.apply(object), value -> set.accept(object, value));
    }

    /** A value that has no place of its own. */
    protected static Vector toll_copy(int value) {
        return Vector.of(new int[] { value }, 0);
    }

    protected static Items<Float> toll_copy(float value) {
        return Items.of(new float[] { value }, 0);
    }

    protected static <T> Items<T> toll_copy(T value) {
        return Items.ofOne(value);
    }

    /** Stores a value, and gives it on as it was before the store cut it. */
    protected static int toll_store(int value, Vector place) {
        place.set(0, value);
        return value;
    }

    /** Stores the low byte of a value, likewise. */
    protected static int toll_store_byte(int value, Vector place) {
        place.set(0, value & 255);
        return value;
    }

    protected static <T> T toll_store(T value, Items<T> place) {
        place.set(0, value);
        return value;
    }

    /** An array with a new object in each place. */
    protected static <T> T[] toll_fill(T[] items, Supplier<T> make) {
        for (int i = 0; i < items.length; i++) items[i] = make.get();
        return items;
    }
}
