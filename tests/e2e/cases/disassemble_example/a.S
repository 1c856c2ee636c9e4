# A small firmware routine: toggles a port bit a number of times.
	.text
	.cc_top blink.function, blink
	.globl blink
	.type blink, @function
	.align 2
blink:
	ldc r1, 0           # counter
	ldc r2, 0x1000      # port address
loop:
	add r1, r1, 1
	stw r1, r2[0]
	lsu r3, r1, r0
	bt r3, loop
	retsp 0
	.size blink, .-blink
	.cc_bottom blink.function

	.section .dp.data, "awd", @progbits
	.align 4
counter:
	.word 0, blink
message:
	.asciiz "blink\tdone\n"
