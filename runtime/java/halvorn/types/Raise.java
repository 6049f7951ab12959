package halvorn.types;

/** An exception of a TOLL program, under the number that its handlers know it by. */
public class Raise extends RuntimeException {

    private static final long serialVersionUID = 1L;

    /** The number. */
    public final int value;

    /** What was raised with it; 0 if nothing was. */
    public final int argument;

    public Raise(int value, int argument) {
        super("Exception " + value + ", " + argument);
        this.value = value;
        this.argument = argument;
    }
}
