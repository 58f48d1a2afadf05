# The upper case of ISO_5428.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as ISO_5428.

TOUPPER CHARSET ISO_5428

a=A b=B c=B d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=V x=X y=Y z=Z {=[ |=\x5C }=] ~=^
