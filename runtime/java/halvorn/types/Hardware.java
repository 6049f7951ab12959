package halvorn.types;

/**
 * What a program around TOLL modules serves them with. Each method has a default, so that a program
 * writes only those that its modules ask for.
 */
public interface Hardware {

    /**
     * Does a syscall.
     *
     * @param number     the syscall's number; 0 for another function whose body is not in TOLL
     * @param name       its full name, module first: "LAMPS.measure"
     * @param arguments  what it was called with: Integer for words of every kind, Float, String, Data or
     *                   the class of a record; a {@link Vector} or {@link Items} for what is passed by
     *                   reference, and for arrays
     * @return           the result: any Number, Boolean or Character for a word, else an object of its
     *                   class; null is 0, no text, no item
     */
    default Object syscall(int number, String name, Object[] arguments) {
        throw new Fault("No function for the syscall " + name + " (" + number + ")");
    }

    /**
     * Finds an item of data, or an object, that a module names. Give the same object each time.
     *
     * @param type  its type in TOLL: "CONNECTOR"
     * @param name  its name: "X1"
     * @return      a {@link Data}, or an object of the class of a record type; of a "MESSAGE" its text as a
     *              String, by default its name
     */
    default Object item(String type, String name) {
        return type.equals("MESSAGE") ? name : Data.named(type, name);
    }

    /**
     * Finds the number that a name of a numeric type stands for.
     *
     * @param type  the type in TOLL
     * @param name  the name
     */
    default int value(String type, String name) {
        throw new Fault("No value for " + type + " " + name);
    }
}
